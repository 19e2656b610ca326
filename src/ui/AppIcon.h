#pragma once

#include <QIcon>
#include <QPainter>
#include <QRectF>

namespace lumiwren {

/// The program's icon in all the sizes that desktops show.
QIcon appIcon();
void drawAppIcon(QPainter &painter, const QRectF &rect);

}  // namespace lumiwren
