#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>

namespace lumiwren {

/// One of the program's own drawings (resources/symbols), in one colour, `size` points square. Drawn once for
/// each size, colour and scale factor. A name that has no drawing is a programming error.
QPixmap symbol(const QString &name, int size, const QColor &color, qreal devicePixelRatio);

}  // namespace lumiwren
