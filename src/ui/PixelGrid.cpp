#include "ui/PixelGrid.h"

#include <QTransform>

#include <algorithm>
#include <cmath>

namespace lumiwren {

int linePixels(qreal width, qreal scale) {
  // Of two that are equally near the finer one: at a scale of 1.5 a line of 2 pixels looks like a bar.
  return std::max(1, static_cast<int>(std::ceil(width * scale - 0.5)));
}

qreal lineOnPixels(const QPainter &painter, qreal width) {
  const qreal scale = painter.deviceTransform().m11();
  return linePixels(width, scale) / scale;
}

QRectF rectOnPixels(const QPainter &painter, const QRectF &rect) {
  const QTransform toDevice = painter.deviceTransform();
  const QRectF device = toDevice.mapRect(rect);
  return toDevice.inverted().mapRect(
      QRectF(QPointF(std::round(device.left()), std::round(device.top())),
             QPointF(std::round(device.right()), std::round(device.bottom()))));
}

QRectF outlineOnPixels(const QPainter &painter, const QRectF &rect, qreal width) {
  const qreal inset = lineOnPixels(painter, width) / 2;
  return rectOnPixels(painter, rect).adjusted(inset, inset, -inset, -inset);
}

}  // namespace lumiwren
