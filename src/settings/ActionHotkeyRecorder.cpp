#include "settings/ActionHotkeyRecorder.h"

#include "platform/KeyCodes.h"

namespace lumiwren {
namespace {

bool isModifierKey(std::uint16_t code) {
  return code >= keyCode::firstModifier && code <= keyCode::lastModifier;
}

}  // namespace

ActionHotkeyRecorder::ActionHotkeyRecorder(EventMonitors &eventMonitors, MainQueue &mainQueue)
    : eventMonitors_(eventMonitors), mainQueue_(mainQueue) {}

void ActionHotkeyRecorder::startRecording() {
  setRecordedCombo(std::nullopt);
  eventMonitor_ =
      eventMonitors_.addLocalMonitor(eventMask::keyDown, [weak = weak_.weak()](const InputEvent &event) {
        auto *const self = weak.get();
        return self ? self->handle(event) : LocalEventResult::Pass;
      });
}

void ActionHotkeyRecorder::stopRecording() {
  eventMonitor_.reset();
  setRecordedCombo(std::nullopt);
}

LocalEventResult ActionHotkeyRecorder::handle(const InputEvent &event) {
  const std::uint64_t modifiers = event.modifierFlags & modifier::hotkeyMask;
  if (modifiers == 0 || isModifierKey(event.keyCode)) {
    return LocalEventResult::Pass;
  }
  mainQueue_.post([weak = weak_.weak(), combo = CustomAction::HotkeyCombo{event.keyCode, modifiers}] {
    if (auto *const self = weak.get()) {
      self->setRecordedCombo(combo);
    }
  });
  return LocalEventResult::Consume;
}

void ActionHotkeyRecorder::setRecordedCombo(const std::optional<CustomAction::HotkeyCombo> &combo) {
  recordedCombo_ = combo;
  recordedComboChanged.notify();
}

}  // namespace lumiwren
