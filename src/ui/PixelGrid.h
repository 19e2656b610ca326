#pragma once

#include <QPainter>
#include <QRectF>

namespace lumiwren {

/// Lines of one point are blurred where a point is 1.25 or 1.5 pixels of the device, unless they are drawn on
/// its grid.

/// The whole number of pixels that is nearest to the width of a line in points, at least one.
int linePixels(qreal width, qreal scale);
/// The whole number of pixels that is nearest to a line's width, at least one; in the painter's units.
qreal lineOnPixels(const QPainter &painter, qreal width);
/// The rectangle with each edge moved to the nearest edge of a pixel.
QRectF rectOnPixels(const QPainter &painter, const QRectF &rect);
/// The middle of a line that runs along the inside of `rect`, to be drawn with a pen of the width
/// lineOnPixels(painter, width).
QRectF outlineOnPixels(const QPainter &painter, const QRectF &rect, qreal width);

}  // namespace lumiwren
