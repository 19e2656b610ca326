#pragma once

#include <QPoint>
#include <QPointF>

namespace lumiwren {

/// Where the toolkit has a point of the desktop that is given in points from the primary screen's bottom-left
/// corner, y up. Right at any scale factor of the screens.
QPoint toolkitPosition(const QPointF &desktopPoint);

}  // namespace lumiwren
