#pragma once

#include "platform/Geometry.h"

#include <optional>

namespace lumiwren {

/// The screens and the pointer, in desktop coordinates (Geometry.h). Main thread; asks the display server
/// only.
class Screens {
public:
  virtual ~Screens() = default;

  virtual Point mouseLocation() = 0;
  /// The part of the main screen that panels and docks leave free. The main screen is the one with the
  /// focused window, else the primary one; empty when there is no screen.
  virtual std::optional<Rect> mainScreenVisibleFrame() = 0;
};

}  // namespace lumiwren
