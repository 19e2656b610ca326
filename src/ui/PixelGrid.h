#pragma once

#include <QColor>
#include <QPainter>
#include <QRect>
#include <QRectF>
#include <QTransform>

namespace lumiwren {

/// Lines of one point are blurred where a point is 1.25 or 1.5 pixels of the device, unless they are drawn on
/// its grid.

/// The whole number of pixels that is nearest to the width of a line in points, at least one.
int linePixels(qreal width, qreal scale);
/// The pixels nearest to a rectangle in the painter's units.
QRect pixelsOf(const QTransform &toDevice, const QRectF &rect);
/// The rectangle with each edge moved to the nearest edge of a pixel.
QRectF rectOnPixels(const QPainter &painter, const QRectF &rect);
/// Draws a line along the inside of a rectangle with round corners; the radius is that of the line's middle.
void strokeInside(QPainter &painter, const QRectF &rect, qreal width, qreal cornerRadius,
                  const QColor &color);

}  // namespace lumiwren
