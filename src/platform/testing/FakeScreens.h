#pragma once

#include "platform/Geometry.h"
#include "platform/Screens.h"

#include <optional>

namespace lumiwren::testing {

class FakeScreens : public Screens {
public:
  Point pointer;
  std::optional<Rect> visibleFrame = Rect{{0, 0}, {1440, 875}};

  Point mouseLocation() override { return pointer; }
  std::optional<Rect> mainScreenVisibleFrame() override { return visibleFrame; }
};

}  // namespace lumiwren::testing
