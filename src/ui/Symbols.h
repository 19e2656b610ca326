#pragma once

#include <QColor>
#include <QPainter>
#include <QPixmap>
#include <QPointF>
#include <QString>

namespace lumiwren {

/// One of the program's own drawings (resources/symbols), in one colour, `size` points square. Drawn once for
/// each size, colour and scale factor. A name that has no drawing is a programming error.
QPixmap symbol(const QString &name, int size, const QColor &color, qreal devicePixelRatio);

/// Draws a symbol about a point, on whole pixels of the device at any scale factor.
void drawSymbol(QPainter &painter, const QString &name, const QPointF &centre, int size, const QColor &color);

}  // namespace lumiwren
