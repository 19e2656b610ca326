#pragma once

#include <QAccessible>
#include <QWidget>

namespace lumiwren {

/// What assistive technology takes a widget for that the toolkit itself knows only as a widget. Before
/// anything else that assistive technology sees of the widget.
void setAccessibleRole(QWidget &widget, QAccessible::Role role);

}  // namespace lumiwren
