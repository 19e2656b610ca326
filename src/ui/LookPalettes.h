#pragma once

#include <QPalette>

namespace lumiwren {

/// The program's own light and dark palettes, for desktops whose toolkit palette is not what the user asked
/// for. Every role of every group is set.
QPalette lightPalette();
QPalette darkPalette();

}  // namespace lumiwren
