#pragma once

#include <QAbstractButton>
#include <QColor>

namespace lumiwren {

/// The ground of a button as it is now: at rest, below the pointer, or pressed.
QColor buttonGround(const QAbstractButton &button);
/// The hairline around it.
QColor buttonOutline(const QAbstractButton &button);

}  // namespace lumiwren
