#pragma once

#include "platform/PanelWindows.h"

#include <QMargins>
#include <QSize>

namespace lumiwren {

/// A window of that size, in pixels, with its corners cut round: for sessions where nothing is translucent.
/// A pixel stays when more than half of it is inside the circle.
WindowForm roundedForm(QSize window, double cornerRadius);

/// A window of that size, in pixels, that draws a shadow of that breadth around its panel. Clicks on the
/// shadow go to what is below, but for `grip` pixels next to the panel.
WindowForm shadowedForm(QSize window, const QMargins &shadow, int grip);

}  // namespace lumiwren
