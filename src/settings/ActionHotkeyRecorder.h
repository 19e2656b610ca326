#pragma once

#include "actions/CustomAction.h"
#include "base/Handle.h"
#include "base/MainQueue.h"
#include "base/Signal.h"
#include "base/Weak.h"
#include "platform/EventMonitors.h"

#include <optional>

namespace lumiwren {

/// Takes key combinations from the keyboard while one of the program's windows has it. What it takes reaches
/// nobody else, so that a combination can be recorded that is an action's already. Main thread.
class ActionHotkeyRecorder {
public:
  ActionHotkeyRecorder(EventMonitors &eventMonitors, MainQueue &mainQueue);
  ActionHotkeyRecorder(const ActionHotkeyRecorder &) = delete;
  ActionHotkeyRecorder &operator=(const ActionHotkeyRecorder &) = delete;

  /// The last combination since startRecording(). It comes by way of the main queue, after the press.
  const std::optional<CustomAction::HotkeyCombo> &recordedCombo() const { return recordedCombo_; }
  /// Told after every assignment of that.
  Signal<> recordedComboChanged;

  void startRecording();
  /// Ends the recording and forgets what was recorded.
  void stopRecording();

private:
  LocalEventResult handle(const InputEvent &event);
  void setRecordedCombo(const std::optional<CustomAction::HotkeyCombo> &combo);

  EventMonitors &eventMonitors_;
  MainQueue &mainQueue_;
  std::optional<CustomAction::HotkeyCombo> recordedCombo_;
  Handle eventMonitor_;  // while recording
  WeakAnchor<ActionHotkeyRecorder> weak_{this};
};

}  // namespace lumiwren
