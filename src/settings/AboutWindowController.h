#pragma once

#include "base/Weak.h"
#include "platform/ApplicationWindows.h"
#include "platform/Bundle.h"
#include "settings/FormWindow.h"

#include <memory>

namespace lumiwren {

/// Owns the About window: one, made at its first showing and kept when it is closed.
class AboutWindowController {
public:
  AboutWindowController(ApplicationWindows &windows, const Bundle &bundle)
      : windows_(windows), bundle_(bundle) {}

  /// Shows the window, or brings it to the front.
  void showWindow();
  /// Empty before the first showing.
  FormWindow *window() const { return window_.get(); }

private:
  ApplicationWindows &windows_;
  const Bundle &bundle_;
  std::unique_ptr<FormWindow> window_;
  WeakAnchor<AboutWindowController> anchor_{this};
};

}  // namespace lumiwren
