#pragma once

#include <QMargins>
#include <QPainter>
#include <QPixmap>
#include <QRect>

namespace lumiwren {

/// The soft shadow around a rounded panel, nothing of it below the panel itself. Drawn once for each scale
/// factor and corner radius, then put together from its corners and edges at any size.
class PanelShadow {
public:
  static constexpr int radius = 16;
  static constexpr int offset = 4;  // downwards
  static constexpr double opacity = 0.15;
  /// How far it reaches beyond each edge of the panel. Whole numbers of pixels at the usual fractional scale
  /// factors.
  static constexpr QMargins margins{radius, radius - offset, radius, radius + offset};

  /// The margins in pixels.
  static QMargins marginsAt(qreal scale);

  explicit PanelShadow(double cornerRadius) : cornerRadius_(cornerRadius) {}

  /// Draws ahead of its first use.
  void prepare(qreal scale);
  /// `panel` is in points.
  void paint(QPainter &painter, const QRect &panel);

private:
  const double cornerRadius_;
  qreal scale_ = 0;
  QPixmap tile_;        // the shadow of a panel as small as one can be without its corners' shadows meeting
  QMargins reach_;      // `margins` in pixels
  int cornerSize_ = 0;  // in pixels from the panel's edge: what of the tile is no edge yet
};

}  // namespace lumiwren
