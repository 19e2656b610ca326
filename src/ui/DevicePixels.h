#pragma once

#include "ui/PixelGrid.h"

#include <QPainter>
#include <QRect>
#include <QTransform>

namespace lumiwren {

/// Lets a painter draw in the pixels of what it draws on, for as long as this object lives: where a point is
/// not a whole number of pixels, edges and lines drawn in points are blurred.
class DevicePixels {
public:
  explicit DevicePixels(QPainter &painter) : painter_(painter), toDevice_(painter.deviceTransform()) {
    painter_.save();
    painter_.setWorldTransform(toDevice_.inverted(), true);
  }
  DevicePixels(const DevicePixels &) = delete;
  DevicePixels &operator=(const DevicePixels &) = delete;
  ~DevicePixels() { painter_.restore(); }

  /// Pixels to a point.
  qreal scale() const { return toDevice_.m11(); }
  QPointF point(const QPointF &points) const { return toDevice_.map(points); }
  /// The pixels nearest to a rectangle that was given in points.
  QRect rect(const QRectF &points) const { return pixelsOf(toDevice_, points); }
  /// A line of one point.
  int hairline() const { return linePixels(1, scale()); }

private:
  QPainter &painter_;
  const QTransform toDevice_;
};

}  // namespace lumiwren
