#pragma once

#include "actions/CustomActionManager.h"
#include "ai/KeychainManager.h"
#include "ai/OpenAIAPIService.h"
#include "base/MainQueue.h"
#include "base/Task.h"
#include "base/Weak.h"
#include "input/HotkeyManager.h"
#include "input/ScreenCaptureManager.h"
#include "platform/Platform.h"
#include "popup/ExplanationPopupController.h"

#include <functional>
#include <optional>
#include <string>

namespace lumiwren {

/// Turns the request to run an action into a streamed answer in the popup. Main thread.
class ActionDispatch {
public:
  /// What dispatching works with; all of it outlives the dispatch and its tasks.
  struct Services {
    Platform &platform;
    MainQueue &mainQueue;
    CustomActionManager &actions;
    KeychainManager &keychain;
    OpenAIAPIService &service;
    HotkeyManager &hotkeys;
    ScreenCaptureManager &screenCapture;
    ExplanationPopupController &popup;
  };
  /// Modal alerts, which tell the user what permission is missing.
  struct Alerts {
    std::function<void()> showAccessibilityAlert;
    std::function<void()> showScreenRecordingAlert;
  };

  ActionDispatch(const Services &services, Alerts alerts);

  /// Runs an action on each press of its hotkey from now on.
  void setupHotkey();
  /// Returns at once; whatever comes of it is seen in the popup or in an alert.
  void dispatchAction(const CustomAction &action);

private:
  void checkKey();
  void keyChecked(bool hasKey);
  void triggerActionWithText(const CustomAction &action);
  void triggerActionWithOCR(const CustomAction &action);
  void recognize(const CustomAction &action, const Image &image);
  void showError(const std::string &message);

  const Services services_;
  const Alerts alerts_;
  Task keyCheck_;
  std::optional<CustomAction> awaitingKey_;  // the latest action whose key check has not ended
  Task currentStreamingTask_;
  WeakAnchor<ActionDispatch> anchor_{this};
};

}  // namespace lumiwren
