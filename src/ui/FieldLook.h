#pragma once

#include <QPainter>
#include <QWidget>

namespace lumiwren {

/// The look that everything has into which text is typed.

/// The background and the outline, which is the focus ring where the widget has the keyboard.
void drawFieldPanel(QPainter &painter, const QWidget &field);
/// Gives the placeholder a readable colour and the disabled field the background of an enabled one. Called
/// when the palette has changed.
void adaptFieldPalette(QWidget &field);

}  // namespace lumiwren
