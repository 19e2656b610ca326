#include "input/HotkeyManager.h"

#include "platform/KeyCodes.h"

#include <algorithm>

namespace lumiwren {
namespace {

bool matches(const CustomAction::HotkeyCombo &hotkey, const InputEvent &event) {
  return hotkey.keyCode == event.keyCode &&
         ((hotkey.modifiers ^ event.modifierFlags) & modifier::hotkeyMask) == 0;
}

}  // namespace

HotkeyManager::HotkeyManager(EventMonitors &monitors, const CustomActionManager &actions,
                             MainQueue &mainQueue)
    : monitors_(monitors), actions_(actions), mainQueue_(mainQueue) {}

void HotkeyManager::startMonitoring() {
  stopMonitoring();
  const auto handle = [weak = anchor_.weak()](const InputEvent &event) {
    if (auto *const self = weak.get()) {
      self->handleKeyEvent(event);
    }
  };
  globalMonitor_ = monitors_.addGlobalMonitor(eventMask::keyDown, handle);
  localMonitor_ = monitors_.addLocalMonitor(eventMask::keyDown, [handle](const InputEvent &event) {
    handle(event);
    return LocalEventResult::Pass;
  });
}

void HotkeyManager::stopMonitoring() {
  globalMonitor_.reset();
  localMonitor_.reset();
}

void HotkeyManager::handleKeyEvent(const InputEvent &event) {
  const auto &actions = actions_.actions();
  const auto action = std::find_if(actions.begin(), actions.end(),
                                   [&](const CustomAction &each) { return matches(each.hotkey, event); });
  if (action == actions.end()) {
    return;
  }
  mainQueue_.post([weak = anchor_.weak(), id = action->id] {
    auto *const self = weak.get();
    if (self && self->onActionHotkeyPressed) {
      self->onActionHotkeyPressed(id);
    }
  });
}

}  // namespace lumiwren
