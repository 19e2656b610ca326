#include "actions/CustomActionManager.h"

#include "actions/CustomActionJSON.h"
#include "platform/testing/FakeUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lumiwren {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const auto &explainText = CustomAction::defaultExplainText();
const auto &explainScreen = CustomAction::defaultExplainScreen();
const auto &translate = CustomAction::defaultTranslate();

CustomAction own(const std::string &name) {
  return {.id = UUID::random(), .name = name, .hotkey = {}, .prompt = name + " {text}"};
}

/// As the editor saves it.
CustomAction edited(CustomAction action) {
  action.prompt += " In verse.";
  action.isDefault = false;
  return action;
}

class CustomActionManagerTest : public ::testing::Test {
protected:
  /// A user's defaults with both flags set: nothing is seeded and nothing migrated.
  void storeAsAfterFirstLaunch(const std::vector<CustomAction> &actions) {
    store(actions);
    defaults_.setBool(CustomActionManager::hasInitializedKey, true);
    defaults_.setBool(CustomActionManager::promptMigrationKey, true);
  }
  void store(const std::vector<CustomAction> &actions) {
    defaults_.setData(CustomActionManager::userDefaultsKey, encodeCustomActions(actions));
  }
  std::vector<CustomAction> stored() {
    return decodeCustomActions(defaults_.dataForKey(CustomActionManager::userDefaultsKey).value());
  }
  /// How often the list has been saved since the test last asked.
  std::size_t saves() {
    const auto now = defaults_.writeCount(CustomActionManager::userDefaultsKey);
    return now - std::exchange(savesSeen_, now);
  }

  testing::FakeUserDefaults defaults_;

private:
  std::size_t savesSeen_ = 0;
};

TEST_F(CustomActionManagerTest, FirstLaunchSeedsSavesAndFlagsTheDefaults) {
  const CustomActionManager manager(defaults_);
  EXPECT_THAT(manager.actions(), ElementsAre(explainText, explainScreen, translate));
  EXPECT_EQ(stored(), manager.actions());
  // The flag follows the list: were it first, a crash in between would leave the user without defaults.
  EXPECT_THAT(defaults_.writes(),
              ElementsAre("customActions", "hasInitializedDefaultActions", "hasUpdatedDefaultPrompts_v1.4"));
  EXPECT_TRUE(defaults_.boolForKey("hasInitializedDefaultActions"));
  EXPECT_TRUE(defaults_.boolForKey("hasUpdatedDefaultPrompts_v1.4"));
}

TEST_F(CustomActionManagerTest, FirstLaunchPutsTheDefaultsBeforeStoredActionsWithoutLookingForDuplicates) {
  const auto x = own("X");
  store({translate, x});
  const CustomActionManager manager(defaults_);
  EXPECT_THAT(manager.actions(), ElementsAre(explainText, explainScreen, translate, translate, x));
  EXPECT_EQ(stored(), manager.actions());
}

TEST_F(CustomActionManagerTest, LaterLaunchesLoadTheListAndWriteNothing) {
  storeAsAfterFirstLaunch({own("X"), translate, own("Y")});
  const auto before = defaults_.writes().size();
  const CustomActionManager manager(defaults_);
  EXPECT_EQ(manager.actions(), stored());
  EXPECT_EQ(defaults_.writes().size(), before);
}

TEST_F(CustomActionManagerTest, AnEmptyStoredListStaysEmpty) {
  storeAsAfterFirstLaunch({});
  EXPECT_THAT(CustomActionManager(defaults_).actions(), IsEmpty());
}

TEST_F(CustomActionManagerTest, UndecodableDataIsReportedKeptAndReplacedByTheNextSave) {
  storeAsAfterFirstLaunch({});
  const std::string broken = R"([{"id":"00000000-0000-0000-0000-000000000001","name":"A
B"}])";
  defaults_.setData("customActions", broken);
  ::testing::internal::CaptureStdout();
  CustomActionManager manager(defaults_);
  const auto printed = ::testing::internal::GetCapturedStdout();
  EXPECT_THAT(printed, StartsWith("Failed to load custom actions: "));
  EXPECT_EQ(printed.find('\n'), printed.size() - 1);
  EXPECT_THAT(manager.actions(), IsEmpty());
  EXPECT_EQ(defaults_.dataForKey("customActions"), broken);

  manager.restoreDefaultActions();
  EXPECT_THAT(stored(), ElementsAre(explainText, explainScreen, translate));
}

TEST_F(CustomActionManagerTest, UndecodableDataOnFirstLaunchGivesTheDefaults) {
  defaults_.setData("customActions", "{}");
  ::testing::internal::CaptureStdout();
  const CustomActionManager manager(defaults_);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Failed to load custom actions: not a list\n");
  EXPECT_THAT(stored(), ElementsAre(explainText, explainScreen, translate));
}

TEST_F(CustomActionManagerTest, MigrationReplacesOnlyThePromptsOfDefaultsAndOnlyOnce) {
  auto old = explainScreen;
  old.name = "My name";
  old.hotkey = {.keyCode = 9, .modifiers = 0};
  old.inputType = CustomAction::InputType::TextSelection;
  old.prompt = "Old prompt";
  auto stranger = own("A default of another version");
  stranger.isDefault = true;
  const auto editedTranslate = edited(translate);
  store({own("X"), old, editedTranslate, stranger});
  defaults_.setBool(CustomActionManager::hasInitializedKey, true);
  const auto before = stored();
  saves();

  auto migrated = old;
  migrated.prompt = explainScreen.prompt;
  EXPECT_THAT(CustomActionManager(defaults_).actions(),
              ElementsAre(before.at(0), migrated, editedTranslate, stranger));
  EXPECT_EQ(saves(), 1U);
  EXPECT_EQ(stored().at(1), migrated);
  EXPECT_TRUE(defaults_.boolForKey(CustomActionManager::promptMigrationKey));

  store({old});
  EXPECT_THAT(CustomActionManager(defaults_).actions(), ElementsAre(old));
}

TEST_F(CustomActionManagerTest, MigrationWithNothingToChangeOnlySetsItsFlag) {
  store({explainText, own("X")});
  defaults_.setBool(CustomActionManager::hasInitializedKey, true);
  saves();
  const CustomActionManager manager(defaults_);
  EXPECT_EQ(saves(), 0U);
  EXPECT_TRUE(defaults_.boolForKey(CustomActionManager::promptMigrationKey));
}

TEST_F(CustomActionManagerTest, AddAppendsAndSaves) {
  storeAsAfterFirstLaunch({translate});
  CustomActionManager manager(defaults_);
  saves();
  const auto x = own("X");
  manager.addAction(x);
  EXPECT_THAT(manager.actions(), ElementsAre(translate, x));
  EXPECT_EQ(stored(), manager.actions());
  manager.addAction(x);  // A second action under one id is not refused.
  EXPECT_THAT(manager.actions(), ElementsAre(translate, x, x));
  EXPECT_EQ(saves(), 2U);
}

TEST_F(CustomActionManagerTest, UpdateReplacesTheFirstActionWithTheIdAndSaves) {
  const auto x = own("X");
  storeAsAfterFirstLaunch({explainText, x, x});
  CustomActionManager manager(defaults_);
  saves();
  auto changed = own("Changed");
  changed.id = x.id;
  manager.updateAction(changed);
  EXPECT_THAT(manager.actions(), ElementsAre(explainText, changed, x));
  EXPECT_EQ(stored(), manager.actions());
  EXPECT_EQ(saves(), 1U);
}

TEST_F(CustomActionManagerTest, UpdateWithAnUnknownIdChangesAndSavesNothing) {
  storeAsAfterFirstLaunch({translate});
  CustomActionManager manager(defaults_);
  int told = 0;
  const auto observing = manager.actionsChanged.observe([&] { ++told; });
  saves();
  manager.updateAction(own("X"));
  EXPECT_THAT(manager.actions(), ElementsAre(translate));
  EXPECT_EQ(saves(), 0U);
  EXPECT_EQ(told, 0);
}

TEST_F(CustomActionManagerTest, DeleteRemovesEveryActionWithTheIdAndKeepsTheOrder) {
  const auto x = own("X");
  const auto y = own("Y");
  storeAsAfterFirstLaunch({x, explainText, x, y});
  CustomActionManager manager(defaults_);
  saves();
  manager.deleteAction(manager.actions().front());  // a reference into the list itself
  EXPECT_THAT(manager.actions(), ElementsAre(explainText, y));
  EXPECT_EQ(stored(), manager.actions());
  EXPECT_EQ(saves(), 1U);
}

TEST_F(CustomActionManagerTest, DeletingAnUnknownActionStillSaves) {
  storeAsAfterFirstLaunch({translate});
  CustomActionManager manager(defaults_);
  saves();
  manager.deleteAction(own("X"));
  EXPECT_THAT(manager.actions(), ElementsAre(translate));
  EXPECT_EQ(saves(), 1U);
}

TEST_F(CustomActionManagerTest, RestorePutsAMissingDefaultBackInItsPlace) {
  CustomActionManager manager(defaults_);
  const auto x = own("X");
  const auto y = own("Y");
  manager.deleteAction(explainScreen);
  EXPECT_TRUE(manager.hasMissingDefaultActions());
  manager.addAction(x);
  manager.addAction(y);
  manager.restoreDefaultActions();
  EXPECT_THAT(manager.actions(), ElementsAre(explainText, explainScreen, translate, x, y));
  EXPECT_EQ(stored(), manager.actions());
  EXPECT_FALSE(manager.hasMissingDefaultActions());
}

TEST_F(CustomActionManagerTest, RestoreOnACompleteListChangesNothingButSaves) {
  CustomActionManager manager(defaults_);
  saves();
  manager.restoreDefaultActions();
  EXPECT_THAT(manager.actions(), ElementsAre(explainText, explainScreen, translate));
  EXPECT_EQ(saves(), 1U);
}

TEST_F(CustomActionManagerTest, RestoreOnAnEmptyListGivesTheDefaults) {
  storeAsAfterFirstLaunch({});
  CustomActionManager manager(defaults_);
  manager.restoreDefaultActions();
  EXPECT_THAT(manager.actions(), ElementsAre(explainText, explainScreen, translate));
}

TEST_F(CustomActionManagerTest, RestoreSortsDefaultsFirstAndLeavesThemAsTheyAre) {
  auto renamed = translate;
  renamed.name = "Renamed";
  const auto x = own("X");
  const auto y = own("Y");
  storeAsAfterFirstLaunch({x, renamed, y, explainText});
  CustomActionManager manager(defaults_);
  manager.restoreDefaultActions();
  EXPECT_THAT(manager.actions(), ElementsAre(explainText, explainScreen, renamed, x, y));
}

TEST_F(CustomActionManagerTest, RestoreSortsADefaultOfUnknownIdWithTheFirstOne) {
  auto stranger = own("Stranger");
  stranger.isDefault = true;
  auto other = own("Other");
  other.isDefault = true;
  storeAsAfterFirstLaunch({translate, stranger, explainScreen, explainText, other});
  CustomActionManager manager(defaults_);
  manager.restoreDefaultActions();
  EXPECT_THAT(manager.actions(), ElementsAre(stranger, explainText, other, explainScreen, translate));
}

TEST_F(CustomActionManagerTest, AnEditedDefaultCountsAsMissingAndIsJoinedByAFreshOne) {
  CustomActionManager manager(defaults_);
  const auto mine = edited(translate);
  manager.updateAction(mine);
  EXPECT_TRUE(manager.hasMissingDefaultActions());
  manager.restoreDefaultActions();
  EXPECT_THAT(manager.actions(), ElementsAre(explainText, explainScreen, translate, mine));
  EXPECT_FALSE(manager.hasMissingDefaultActions());
}

TEST_F(CustomActionManagerTest, WhatCannotBeEncodedIsReportedAndStaysInMemory) {
  CustomActionManager manager(defaults_);
  const auto before = stored();
  auto bad = own("caf\xE9");
  ::testing::internal::CaptureStdout();
  manager.addAction(bad);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "Failed to save custom actions: a text is not valid UTF-8\n");
  EXPECT_EQ(manager.actions().back(), bad);
  EXPECT_EQ(stored(), before);
}

TEST_F(CustomActionManagerTest, ObserversAreToldOfEveryChangeAndSeeTheNewList) {
  CustomActionManager manager(defaults_);
  std::vector<std::size_t> sizes;
  const auto observing = manager.actionsChanged.observe([&] { sizes.push_back(manager.actions().size()); });
  const auto x = own("X");
  manager.addAction(x);
  manager.updateAction(x);
  manager.deleteAction(x);
  manager.deleteAction(explainText);
  manager.restoreDefaultActions();
  EXPECT_THAT(sizes, ElementsAre(4, 4, 3, 2, 3));
}

}  // namespace
}  // namespace lumiwren
