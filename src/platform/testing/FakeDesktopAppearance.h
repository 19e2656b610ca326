#pragma once

#include "base/Signal.h"
#include "platform/DesktopAppearance.h"

#include <functional>
#include <utility>

namespace lumiwren::testing {

/// A desktop whose look a test changes.
class FakeDesktopAppearance : public DesktopAppearance {
public:
  Appearance current() override { return current_; }
  Handle observe(std::function<void(const Appearance &)> observer) override {
    return changed_.observe(std::move(observer));
  }

  /// Observers are told if it is another one.
  void set(const Appearance &appearance) {
    if (appearance != current_) {
      current_ = appearance;
      changed_.notify(current_);
    }
  }

private:
  Appearance current_;
  Signal<const Appearance &> changed_;
};

}  // namespace lumiwren::testing
