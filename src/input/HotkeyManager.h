#pragma once

#include "actions/CustomActionManager.h"
#include "base/Handle.h"
#include "base/MainQueue.h"
#include "base/UUID.h"
#include "base/Weak.h"
#include "platform/EventMonitors.h"

#include <functional>

namespace lumiwren {

/// Compares every key press with the hotkeys of the current actions. Takes nothing away: the application in
/// front, or our own window, gets the press as well. Main thread.
class HotkeyManager {
public:
  HotkeyManager(EventMonitors &monitors, const CustomActionManager &actions, MainQueue &mainQueue);

  /// Called on the main queue, once for each press of an action's hotkey, with the action's id.
  std::function<void(const UUID &)> onActionHotkeyPressed;

  /// Watches from now on; when it already does, the monitors are replaced.
  void startMonitoring();
  void stopMonitoring();

private:
  void handleKeyEvent(const InputEvent &event);

  EventMonitors &monitors_;
  const CustomActionManager &actions_;
  MainQueue &mainQueue_;
  Handle globalMonitor_;
  Handle localMonitor_;
  WeakAnchor<HotkeyManager> anchor_{this};
};

}  // namespace lumiwren
