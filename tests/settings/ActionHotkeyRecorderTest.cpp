#include "settings/ActionHotkeyRecorder.h"

#include "input/HotkeyManager.h"
#include "platform/KeyCodes.h"
#include "platform/testing/FakeEventMonitors.h"
#include "platform/testing/FakeUserDefaults.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <optional>

namespace lumiwren {
namespace {

using Combo = CustomAction::HotkeyCombo;

constexpr std::uint64_t heldModifiers = modifier::option | modifier::shift;

class ActionHotkeyRecorderTest : public ::testing::Test {
protected:
  LocalEventResult press(std::uint16_t code, std::uint64_t modifiers) {
    const auto result = monitors.pressKeyHere(code, modifiers);
    queue.runPending();
    return result;
  }

  MainQueue queue;
  testing::FakeEventMonitors monitors;
  std::optional<ActionHotkeyRecorder> recorder{std::in_place, monitors, queue};
};

TEST_F(ActionHotkeyRecorderTest, RecordsNothingBeforeItIsStarted) {
  EXPECT_EQ(press(40, heldModifiers), LocalEventResult::Pass);
  EXPECT_FALSE(recorder->recordedCombo());
}

TEST_F(ActionHotkeyRecorderTest, OptionShiftKIsRecordedAsKeyCode40With0xA0000) {
  recorder->startRecording();
  EXPECT_EQ(press(40, heldModifiers), LocalEventResult::Consume);
  EXPECT_EQ(recorder->recordedCombo(), (Combo{40, 0xA0000}));
  EXPECT_EQ(recorder->recordedCombo()->displayString(), "⌥⇧K");
}

TEST_F(ActionHotkeyRecorderTest, OptionF5IsRecordedAndShownWithAQuestionMark) {
  recorder->startRecording();
  EXPECT_EQ(press(96, modifier::option), LocalEventResult::Consume);
  EXPECT_EQ(recorder->recordedCombo()->displayString(), "⌥?");
}

TEST_F(ActionHotkeyRecorderTest, ACombinationWithoutAModifierIsNeverRecordedAndPasses) {
  recorder->startRecording();
  constexpr std::uint64_t function = 0x800000;
  for (const std::uint16_t code : std::initializer_list<std::uint16_t>{0, 36, 49, 51, 53, 96}) {
    for (const std::uint64_t flags : {std::uint64_t{0}, modifier::capsLock, function}) {
      EXPECT_EQ(press(code, flags), LocalEventResult::Pass) << code;
    }
  }
  EXPECT_FALSE(recorder->recordedCombo());
}

TEST_F(ActionHotkeyRecorderTest, PressingOnlyAModifierKeyRecordsNothing) {
  recorder->startRecording();
  for (std::uint16_t code = 54; code <= 63; ++code) {
    EXPECT_EQ(press(code, heldModifiers), LocalEventResult::Pass) << code;
  }
  EXPECT_FALSE(recorder->recordedCombo());
  for (const std::uint16_t code : std::initializer_list<std::uint16_t>{53, 64}) {
    EXPECT_EQ(press(code, heldModifiers), LocalEventResult::Consume) << code;
  }
}

TEST_F(ActionHotkeyRecorderTest, CapsLockIsNoPartOfWhatIsRecorded) {
  recorder->startRecording();
  EXPECT_EQ(press(40, modifier::control | modifier::capsLock), LocalEventResult::Consume);
  EXPECT_EQ(recorder->recordedCombo(), (Combo{40, modifier::control}));
}

TEST_F(ActionHotkeyRecorderTest, TheCombinationComesOneTurnAfterThePress) {
  recorder->startRecording();
  int told = 0;
  const Handle observation = recorder->recordedComboChanged.observe([&told] { ++told; });
  EXPECT_EQ(monitors.pressKeyHere(40, heldModifiers), LocalEventResult::Consume);
  EXPECT_FALSE(recorder->recordedCombo());
  EXPECT_EQ(told, 0);
  queue.runPending();
  EXPECT_TRUE(recorder->recordedCombo());
  EXPECT_EQ(told, 1);
}

TEST_F(ActionHotkeyRecorderTest, EachFurtherCombinationReplacesTheOneBefore) {
  recorder->startRecording();
  press(40, heldModifiers);
  press(1, modifier::command);
  EXPECT_EQ(recorder->recordedCombo(), (Combo{1, modifier::command}));
}

TEST_F(ActionHotkeyRecorderTest, StoppingForgetsTheCombinationAndLetsKeysPass) {
  recorder->startRecording();
  press(40, heldModifiers);
  recorder->stopRecording();
  EXPECT_FALSE(recorder->recordedCombo());
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
  EXPECT_EQ(press(40, heldModifiers), LocalEventResult::Pass);
}

TEST_F(ActionHotkeyRecorderTest, StartingAgainForgetsTheCombinationAndAsksOnce) {
  recorder->startRecording();
  press(40, heldModifiers);
  recorder->startRecording();
  EXPECT_FALSE(recorder->recordedCombo());
  EXPECT_EQ(monitors.localMonitorCount(), 1U);
}

TEST_F(ActionHotkeyRecorderTest, ARecorderThatIsGoneRecordsNothing) {
  recorder->startRecording();
  EXPECT_EQ(monitors.pressKeyHere(40, heldModifiers), LocalEventResult::Consume);
  recorder.reset();
  queue.runPending();
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
  EXPECT_EQ(press(40, heldModifiers), LocalEventResult::Pass);
}

TEST_F(ActionHotkeyRecorderTest, RecordingTheHotkeyOfAnActionDoesNotRunIt) {
  testing::FakeUserDefaults defaults;
  const CustomActionManager actions(defaults);
  HotkeyManager hotkeys(monitors, actions, queue);
  int runs = 0;
  hotkeys.onActionHotkeyPressed = [&runs](const UUID &) { ++runs; };
  hotkeys.startMonitoring();
  press(keyCode::e, heldModifiers);
  ASSERT_EQ(runs, 1);

  recorder->startRecording();
  press(keyCode::e, heldModifiers);
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(recorder->recordedCombo(), CustomAction::defaultExplainText().hotkey);

  recorder->stopRecording();
  press(keyCode::e, heldModifiers);
  EXPECT_EQ(runs, 2);
}

}  // namespace
}  // namespace lumiwren
