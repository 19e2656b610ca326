#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

namespace lumiwren {

/// The invisible edges of a window by which it is resized, above everything else in it. What is inside the
/// edges is not covered.
class ResizeFrame : public QWidget {
  Q_OBJECT

public:
  explicit ResizeFrame(QWidget *window);

  /// A window's geometry after the pointer has moved by `distance` while it held these edges. What is not
  /// held stays where it is, also when a limit is reached.
  static QRect resized(const QRect &geometry, Qt::Edges edges, QPoint distance, QSize minimum, QSize maximum);

protected:
  void resizeEvent(QResizeEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mouseReleaseEvent(QMouseEvent *event) override;

private:
  Qt::Edges edgesAt(QPoint point) const;

  Qt::Edges held_;
  QPoint heldAt_;
  QRect heldGeometry_;
};

}  // namespace lumiwren
