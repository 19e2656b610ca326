#include "input/HotkeyManager.h"

#include "platform/KeyCodes.h"
#include "platform/testing/FakeEventMonitors.h"
#include "platform/testing/FakeUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint64_t commandShift = modifier::command | modifier::shift;

class HotkeyManagerTest : public ::testing::Test {
protected:
  HotkeyManagerTest() {
    for (const CustomAction &shipped : std::vector(actions.actions())) {
      actions.deleteAction(shipped);
    }
    manager->onActionHotkeyPressed = [this](const UUID &id) { pressed.push_back(id); };
  }

  UUID addAction(CustomAction::HotkeyCombo hotkey) {
    const CustomAction action{
        .id = UUID::random(), .name = "An action", .hotkey = hotkey, .prompt = "{text}"};
    actions.addAction(action);
    return action.id;
  }

  testing::FakeUserDefaults defaults;
  testing::FakeEventMonitors monitors;
  MainQueue mainQueue;
  CustomActionManager actions{defaults};
  std::optional<HotkeyManager> manager{std::in_place, monitors, actions, mainQueue};
  std::vector<UUID> pressed;
};

TEST_F(HotkeyManagerTest, ReportsAPressInAnotherApplicationOnTheMainQueue) {
  const UUID id = addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  EXPECT_THAT(pressed, IsEmpty()) << "reported from within the monitor";
  mainQueue.runPending();
  EXPECT_THAT(pressed, ElementsAre(id));
}

TEST_F(HotkeyManagerTest, ReportsEachPressOnce) {
  const UUID id = addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  mainQueue.runPending();
  EXPECT_THAT(pressed, ElementsAre(id, id));
}

TEST_F(HotkeyManagerTest, OfTwoActionsWithTheSameHotkeyOnlyTheEarlierOneFires) {
  const UUID first = addAction({keyCode::e, commandShift});
  addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  mainQueue.runPending();
  EXPECT_THAT(pressed, ElementsAre(first));
}

TEST_F(HotkeyManagerTest, CapsLockDoesNotMatterButAFurtherModifierDoes) {
  const UUID id = addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift | modifier::option);
  monitors.pressKeyElsewhere(keyCode::e, modifier::command);
  mainQueue.runPending();
  EXPECT_THAT(pressed, IsEmpty());
  monitors.pressKeyElsewhere(keyCode::e, commandShift | modifier::capsLock);
  mainQueue.runPending();
  EXPECT_THAT(pressed, ElementsAre(id));
}

TEST_F(HotkeyManagerTest, StoredBitsBesideTheFourModifiersAreIgnored) {
  const UUID id = addAction({keyCode::e, commandShift | 0x800000 | modifier::capsLock | 0x108});
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift | 0x200000);
  mainQueue.runPending();
  EXPECT_THAT(pressed, ElementsAre(id));
}

TEST_F(HotkeyManagerTest, AnotherKeyWithTheSameModifiersDoesNotFire) {
  addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::t, commandShift);
  mainQueue.runPending();
  EXPECT_THAT(pressed, IsEmpty());
}

TEST_F(HotkeyManagerTest, APressInAnOwnWindowIsReportedAndStillReachesTheWindow) {
  const UUID id = addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  EXPECT_EQ(monitors.pressKeyHere(keyCode::e, commandShift), LocalEventResult::Pass);
  mainQueue.runPending();
  EXPECT_THAT(pressed, ElementsAre(id));
}

TEST_F(HotkeyManagerTest, StartingTwiceLeavesOneGlobalAndOneLocalMonitor) {
  manager->startMonitoring();
  manager->startMonitoring();
  EXPECT_EQ(monitors.globalMonitorCount(), 1U);
  EXPECT_EQ(monitors.localMonitorCount(), 1U);
}

TEST_F(HotkeyManagerTest, StoppingRemovesBothMonitorsAndStartingAgainBringsThemBack) {
  const UUID id = addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  manager->stopMonitoring();
  EXPECT_EQ(monitors.globalMonitorCount(), 0U);
  EXPECT_EQ(monitors.localMonitorCount(), 0U);
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  mainQueue.runPending();
  EXPECT_THAT(pressed, ElementsAre(id));
}

TEST_F(HotkeyManagerTest, ASessionThatDoesNotLetWatchLeavesTheLocalMonitor) {
  monitors.permitsGlobalMonitors = false;
  const UUID id = addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  monitors.pressKeyHere(keyCode::e, commandShift);
  mainQueue.runPending();
  EXPECT_THAT(pressed, ElementsAre(id));
}

TEST_F(HotkeyManagerTest, WithoutACallbackMatchesAreDropped) {
  addAction({keyCode::e, commandShift});
  manager->onActionHotkeyPressed = nullptr;
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  EXPECT_NO_THROW(mainQueue.runPending());
  EXPECT_THAT(pressed, IsEmpty());
}

TEST_F(HotkeyManagerTest, TheCallbackThatIsSetWhenTheBlockRunsIsTheOneThatIsCalled) {
  const UUID id = addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  std::vector<UUID> later;
  manager->onActionHotkeyPressed = [&](const UUID &each) { later.push_back(each); };
  mainQueue.runPending();
  EXPECT_THAT(pressed, IsEmpty());
  EXPECT_THAT(later, ElementsAre(id));
}

TEST_F(HotkeyManagerTest, FollowsTheListOfActionsAsItIsAtThePress) {
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  const UUID id = addAction({keyCode::e, commandShift});
  mainQueue.runPending();
  EXPECT_THAT(pressed, IsEmpty());
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  mainQueue.runPending();
  EXPECT_THAT(pressed, ElementsAre(id));
}

TEST_F(HotkeyManagerTest, AfterTheManagersEndNothingIsReported) {
  addAction({keyCode::e, commandShift});
  manager->startMonitoring();
  monitors.pressKeyElsewhere(keyCode::e, commandShift);
  manager.reset();
  mainQueue.runPending();
  EXPECT_THAT(pressed, IsEmpty());
  EXPECT_EQ(monitors.globalMonitorCount(), 0U);
}

}  // namespace
}  // namespace lumiwren
