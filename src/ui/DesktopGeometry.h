#pragma once

#include <QPoint>
#include <QPointF>
#include <QScreen>

namespace lumiwren {

/// Where the toolkit has a point of the desktop that is given in points from the primary screen's bottom-left
/// corner, y up. Right at any scale factor of the screens.
QPoint toolkitPosition(const QPointF &desktopPoint);
/// The same for a point in the display server's pixels, y down.
QPoint toolkitPositionOfPixel(QPoint pixel);

/// The screen that a point of the toolkit's is on; the primary one where that is none.
const QScreen &screenAt(QPoint position);

}  // namespace lumiwren
