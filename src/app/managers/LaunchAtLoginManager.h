#pragma once

#include "base/Handle.h"
#include "base/MainQueue.h"
#include "base/Signal.h"
#include "base/Weak.h"
#include "platform/LoginItem.h"
#include "platform/UserDefaults.h"

#include <chrono>
#include <functional>
#include <string_view>
#include <utility>

namespace lumiwren {

/// Whether the program is started when the user logs in. On its first run it sees to that itself. Main
/// thread.
///
/// The flag is read from the system once, and follows only what is assigned to it afterwards. A registry that
/// refuses is answered by the opposite attempt, which sets the flag back, and by the next one if that fails
/// too, until one of them succeeds.
class LaunchAtLoginManager {
public:
  /// The defaults' key of a boolean that is there from the first run on.
  static constexpr std::string_view hasLaunchedBeforeKey = "hasLaunchedBefore";

  LaunchAtLoginManager(LoginItem &loginItem, UserDefaults &defaults, MainQueue &mainQueue);

  bool isEnabled() const { return isEnabled_; }
  /// Registers or unregisters the login item, whatever the flag was.
  void setIsEnabled(bool isEnabled);
  void toggle() { setIsEnabled(!isEnabled_); }
  /// Told after each assignment, for as long as the handle is held.
  Handle observe(std::function<void()> changed) { return changed_.observe(std::move(changed)); }

private:
  /// Attempts what the flag says.
  void apply();
  void retry();

  LoginItem &loginItem_;
  MainQueue &mainQueue_;
  bool isEnabled_;
  unsigned assignments_ = 0;  // by others than the failures
  std::chrono::milliseconds pause_{0};
  Signal<> changed_;
  WeakAnchor<LaunchAtLoginManager> anchor_{this};
};

}  // namespace lumiwren
