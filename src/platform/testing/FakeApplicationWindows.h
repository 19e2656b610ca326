#pragma once

#include "platform/ApplicationWindows.h"

#include <vector>

namespace lumiwren::testing {

/// Remembers what was asked.
class FakeApplicationWindows : public ApplicationWindows {
public:
  void activate(NativeWindow window) override { activated.push_back(window); }
  void handOverKeyboard(NativeWindow window) override { handedOver.push_back(window); }
  void setFloating(NativeWindow window) override { floating.push_back(window); }

  std::vector<NativeWindow> activated;
  std::vector<NativeWindow> handedOver;
  std::vector<NativeWindow> floating;
};

}  // namespace lumiwren::testing
