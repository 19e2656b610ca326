#include "app/managers/LaunchAtLoginManager.h"

#include "base/PrintLine.h"

#include <algorithm>
#include <exception>
#include <string>

namespace lumiwren {
namespace {

// A registry that keeps refusing is asked ever more rarely: the first time at once, in the end twice a
// minute.
constexpr std::chrono::milliseconds firstPause{100};
constexpr std::chrono::milliseconds longestPause{30'000};

}  // namespace

LaunchAtLoginManager::LaunchAtLoginManager(LoginItem &loginItem, UserDefaults &defaults, MainQueue &mainQueue)
    : loginItem_(loginItem),
      mainQueue_(mainQueue),
      isEnabled_(loginItem.status() == LoginItem::Status::Enabled) {
  if (defaults.boolForKey(hasLaunchedBeforeKey)) {
    return;
  }
  defaults.setBool(hasLaunchedBeforeKey, true);
  if (!isEnabled_) {
    setIsEnabled(true);
  }
}

void LaunchAtLoginManager::setIsEnabled(bool isEnabled) {
  ++assignments_;
  pause_ = {};
  isEnabled_ = isEnabled;
  changed_.notify();
  apply();
}

void LaunchAtLoginManager::apply() {
  try {
    if (isEnabled_) {
      loginItem_.registerItem();
    } else {
      loginItem_.unregisterItem();
    }
  } catch (const std::exception &error) {
    printLine(std::string(isEnabled_ ? "Failed to enable launch at login: "
                                     : "Failed to disable launch at login: ") +
              error.what());
    isEnabled_ = !isEnabled_;
    changed_.notify();
    retry();
  }
}

void LaunchAtLoginManager::retry() {
  mainQueue_.postAfter(pause_, [weak = anchor_.weak(), assignment = assignments_] {
    if (auto *const self = weak.get(); self && self->assignments_ == assignment) {
      self->apply();
    }
  });
  pause_ = std::min(std::max(pause_ * 2, firstPause), longestPause);
}

}  // namespace lumiwren
