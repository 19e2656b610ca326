#pragma once

#include <QPainter>
#include <QRectF>
#include <QWidget>

namespace lumiwren {

constexpr qreal focusRingWidth = 2;

/// Whether the widget has the keyboard and is to show it.
bool showsFocus(const QWidget &widget);
/// Draws the ring of what has the keyboard along the inside of an area.
void drawFocusRing(QPainter &painter, const QWidget &widget, const QRectF &area);

}  // namespace lumiwren
