#pragma once

#include "base/Signal.h"
#include "platform/PanelWindows.h"

#include <map>
#include <optional>
#include <utility>

namespace lumiwren::testing {

/// Remembers what was asked; a window is where the test says.
class FakePanelWindows : public PanelWindows {
public:
  bool isTranslucencySupported() override { return translucencySupported; }
  Handle observeTranslucency(std::function<void()> changed) override {
    return translucencyChanged_.observe(std::move(changed));
  }
  void setForm(NativeWindow window, const WindowForm &form) override { forms[window] = form; }
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

  /// A compositor starts or ends.
  void setTranslucencySupported(bool supported) {
    translucencySupported = supported;
    translucencyChanged_.notify();
  }

  bool translucencySupported = false;
  int makeKeyCount = 0;
  std::optional<NativeWindow> keyWindow;
  std::map<NativeWindow, WindowForm> forms;
  std::map<NativeWindow, Rect> frames;
  Rect anyFrame;  // of every window that is not in `frames`

private:
  Signal<> translucencyChanged_;
};

}  // namespace lumiwren::testing
