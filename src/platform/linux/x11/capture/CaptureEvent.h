#pragma once

#include "platform/linux/KeySymbols.h"
#include "platform/linux/x11/capture/PixelRegion.h"

#include <cstdint>

namespace lumiwren {

/// What the user does while a region is being chosen.
struct CaptureEvent {
  enum class Kind : std::uint8_t { Motion, ButtonDown, ButtonUp, KeyDown, KeyUp };
  Kind kind;
  PixelPoint pointer;        // where it is; also with keys
  std::uint32_t button = 0;  // as the user has arranged them: 1 selects, 3 is for menus
  KeySym key = 0;            // what it types without modifiers
  bool shift = false;
};

}  // namespace lumiwren
