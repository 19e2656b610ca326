#pragma once

#include "platform/PanelWindows.h"

#include <QSize>

namespace lumiwren {

/// A window of that size, in pixels, with its corners cut round: for sessions where nothing is translucent.
/// A pixel stays when more than half of it is inside the circle.
WindowForm roundedForm(QSize window, double cornerRadius);

}  // namespace lumiwren
