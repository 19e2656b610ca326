#include "ui/PixelGrid.h"

#include <algorithm>
#include <cmath>

namespace lumiwren {

int linePixels(qreal width, qreal scale) {
  // Of two that are equally near the finer one: at a scale of 1.5 a line of 2 pixels looks like a bar.
  return std::max(1, static_cast<int>(std::ceil(width * scale - 0.5)));
}

QRect pixelsOf(const QTransform &toDevice, const QRectF &rect) {
  const QRectF exact = toDevice.mapRect(rect);
  const QPoint topLeft(qRound(exact.left()), qRound(exact.top()));
  return {topLeft, QSize(qRound(exact.right()) - topLeft.x(), qRound(exact.bottom()) - topLeft.y())};
}

QRectF rectOnPixels(const QPainter &painter, const QRectF &rect) {
  const QTransform toDevice = painter.deviceTransform();
  return toDevice.inverted().mapRect(QRectF(pixelsOf(toDevice, rect)));
}

void strokeInside(QPainter &painter, const QRectF &rect, qreal width, qreal cornerRadius,
                  const QColor &color) {
  const qreal scale = painter.deviceTransform().m11();
  const qreal line = linePixels(width, scale) / scale;
  painter.setPen(QPen(color, line));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(rectOnPixels(painter, rect).adjusted(line / 2, line / 2, -line / 2, -line / 2),
                          cornerRadius, cornerRadius);
}

}  // namespace lumiwren
