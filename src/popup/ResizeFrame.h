#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

namespace lumiwren {

/// The invisible edges of a window, or of a panel inside it, by which the window is resized. Above everything
/// else in it; what is inside the edges is not covered.
class ResizeFrame : public QWidget {
  Q_OBJECT

public:
  explicit ResizeFrame(QWidget *window);

  /// A window's geometry after the pointer has moved by `distance` while it held these edges. What is not
  /// held stays where it is, also when a limit is reached.
  static QRect resized(const QRect &geometry, Qt::Edges edges, QPoint distance, QSize minimum, QSize maximum);
  /// The smallest number of points that is a whole number of pixels. A window whose size and place changed by
  /// another number would move its other edges when it is rounded to pixels.
  static int wholePixelStep(qreal scale);

  /// How far the edges reach to either side of the panel's outline.
  void setReach(int outside, int inside);
  /// Goes where the panel is.
  void surround(const QRect &panel);
  /// Ends a resizing that is under way; the window stays as it is.
  void letGo() { held_ = {}; }

protected:
  void mousePressEvent(QMouseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mouseReleaseEvent(QMouseEvent *event) override;

private:
  Qt::Edges edgesAt(QPoint point) const;

  int outside_ = 0;
  int inside_ = 0;
  Qt::Edges held_;
  QPointF heldAt_;
  QRect heldGeometry_;
};

}  // namespace lumiwren
