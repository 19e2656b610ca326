#pragma once

#include "platform/PanelWindows.h"

#include <map>
#include <optional>

namespace lumiwren::testing {

/// Remembers what was asked; a window is where the test says.
class FakePanelWindows : public PanelWindows {
public:
  bool isTranslucencySupported() override { return translucencySupported; }
  void makeKey(NativeWindow window) override {
    ++makeKeyCount;
    keyWindow = window;
  }
  void resignKey(NativeWindow window) override {
    if (keyWindow == window) {
      keyWindow.reset();
    }
  }
  Rect frame(NativeWindow window) override {
    const auto found = frames.find(window);
    return found == frames.end() ? anyFrame : found->second;
  }

  bool translucencySupported = false;
  int makeKeyCount = 0;
  std::optional<NativeWindow> keyWindow;
  std::map<NativeWindow, Rect> frames;
  Rect anyFrame;  // of every window that is not in `frames`
};

}  // namespace lumiwren::testing
