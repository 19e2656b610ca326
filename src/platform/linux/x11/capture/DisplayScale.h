#pragma once

#include <optional>
#include <string_view>

namespace lumiwren {

/// How much larger than at 96 dots per inch things are drawn, from 1 to 4. What the user has told the desktop
/// counts, as the toolkit takes it: the resolution in the server's resources ("Xft.dpi") times
/// QT_SCALE_FACTOR. Empty when neither says anything.
std::optional<double> chosenScale(std::string_view resources, std::string_view qtScaleFactor);

/// What a monitor's size suggests when nothing was chosen: 2 for more than 170 dots per inch, else 1.
/// Monitors say all kinds of things about their size, so nothing finer is read from it.
double suggestedScale(int pixels, int millimetres);

}  // namespace lumiwren
