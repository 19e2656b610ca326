#pragma once

#include <QAccessible>
#include <QWidget>

namespace lumiwren {

/// What assistive technology takes a widget for that the toolkit itself knows only as a widget. Before the
/// widget is asked for.
void setAccessibleRole(QWidget &widget, QAccessible::Role role);

}  // namespace lumiwren
