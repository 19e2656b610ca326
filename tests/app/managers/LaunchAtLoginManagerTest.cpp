#include "app/managers/LaunchAtLoginManager.h"

#include "platform/testing/FakeLoginItem.h"
#include "platform/testing/FakeUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Status = LoginItem::Status;

class LaunchAtLoginManagerTest : public ::testing::Test {
protected:
  void launch() { manager.emplace(loginItem, defaults, queue); }
  void launchAgain() {
    defaults.setBool(LaunchAtLoginManager::hasLaunchedBeforeKey, true);
    launch();
  }
  /// What is printed meanwhile.
  template <typename Action>
  std::string printed(Action action) {
    ::testing::internal::CaptureStdout();
    action();
    return ::testing::internal::GetCapturedStdout();
  }
  void pass(std::chrono::milliseconds duration) {
    now += duration;
    queue.runPending();
  }

  testing::FakeLoginItem loginItem;
  testing::FakeUserDefaults defaults;
  MainQueue::TimePoint now{};
  MainQueue queue{[this] { return now; }};
  std::optional<LaunchAtLoginManager> manager;
};

TEST_F(LaunchAtLoginManagerTest, TheFirstLaunchRegistersTheLoginItem) {
  launch();
  EXPECT_TRUE(defaults.boolForKey("hasLaunchedBefore"));
  EXPECT_THAT(loginItem.attempts, ElementsAre("register"));
  EXPECT_TRUE(manager->isEnabled());
}

TEST_F(LaunchAtLoginManagerTest, TheFirstLaunchWithAnEnabledLoginItemOnlyWritesTheKey) {
  loginItem.current = Status::Enabled;
  launch();
  EXPECT_TRUE(defaults.boolForKey("hasLaunchedBefore"));
  EXPECT_THAT(loginItem.attempts, IsEmpty());
  EXPECT_TRUE(manager->isEnabled());
}

TEST_F(LaunchAtLoginManagerTest, LaterLaunchesNeverRegisterByThemselves) {
  launchAgain();
  EXPECT_THAT(loginItem.attempts, IsEmpty());
  EXPECT_FALSE(manager->isEnabled());
  EXPECT_EQ(defaults.writeCount("hasLaunchedBefore"), 1U);  // the test's own
}

TEST_F(LaunchAtLoginManagerTest, OnlyAnEnabledItemReadsAsEnabled) {
  for (const auto status : {Status::NotRegistered, Status::RequiresApproval, Status::NotFound}) {
    loginItem.current = status;
    launchAgain();
    EXPECT_FALSE(manager->isEnabled());
  }
  loginItem.current = Status::Enabled;
  launchAgain();
  EXPECT_TRUE(manager->isEnabled());
}

TEST_F(LaunchAtLoginManagerTest, TogglingRegistersAndUnregistersAndTellsEachTime) {
  launchAgain();
  std::vector<bool> seen;
  const Handle observing = manager->observe([&] { seen.push_back(manager->isEnabled()); });
  manager->toggle();
  manager->toggle();
  EXPECT_THAT(loginItem.attempts, ElementsAre("register", "unregister"));
  EXPECT_THAT(seen, ElementsAre(true, false));
}

TEST_F(LaunchAtLoginManagerTest, AnAssignmentOfTheSameValueIsAnAssignment) {
  loginItem.current = Status::Enabled;
  launchAgain();
  manager->setIsEnabled(true);
  EXPECT_THAT(loginItem.attempts, ElementsAre("register"));
}

TEST_F(LaunchAtLoginManagerTest, AFailingRegistrationIsPrintedAndFollowedByAnUnregistration) {
  launchAgain();
  loginItem.isBroken = true;
  EXPECT_EQ(printed([&] { manager->toggle(); }),
            "Failed to enable launch at login: the registry is broken\n");
  EXPECT_FALSE(manager->isEnabled());
  loginItem.isBroken = false;
  EXPECT_EQ(printed([&] { pass({}); }), "");
  EXPECT_THAT(loginItem.attempts, ElementsAre("register", "unregister"));
  EXPECT_FALSE(manager->isEnabled());
}

TEST_F(LaunchAtLoginManagerTest, AFailingUnregistrationIsPrintedAndFollowedByARegistration) {
  loginItem.current = Status::Enabled;
  launchAgain();
  loginItem.isBroken = true;
  EXPECT_EQ(printed([&] { manager->toggle(); }),
            "Failed to disable launch at login: the registry is broken\n");
  EXPECT_TRUE(manager->isEnabled());
  loginItem.isBroken = false;
  pass({});
  EXPECT_THAT(loginItem.attempts, ElementsAre("unregister", "register"));
  EXPECT_TRUE(manager->isEnabled());
}

TEST_F(LaunchAtLoginManagerTest, ARegistryThatKeepsRefusingIsAskedInTurnsOfTheirOwnUntilItWorksAgain) {
  launchAgain();
  loginItem.isBroken = true;
  printed([&] {
    manager->toggle();
    for (std::size_t attempts = 1; attempts < 50; ++attempts) {
      ASSERT_EQ(loginItem.attempts.size(), attempts);
      pass(std::chrono::minutes(1));
    }
  });
  EXPECT_EQ(loginItem.attempts[48], "register");
  EXPECT_EQ(loginItem.attempts[49], "unregister");
  loginItem.isBroken = false;
  pass(std::chrono::minutes(1));
  EXPECT_EQ(loginItem.attempts.size(), 51U);
  EXPECT_EQ(loginItem.attempts.back(), "register");
  EXPECT_TRUE(manager->isEnabled());
  pass(std::chrono::minutes(10));
  EXPECT_EQ(loginItem.attempts.size(), 51U);
}

TEST_F(LaunchAtLoginManagerTest, ARegistryThatKeepsRefusingIsAskedEverMoreRarely) {
  launchAgain();
  loginItem.isBroken = true;
  printed([&] {
    manager->toggle();
    for (int minute = 0; minute < 6000; ++minute) {
      pass(std::chrono::milliseconds(10));
    }
  });
  EXPECT_GT(loginItem.attempts.size(), 5U);
  EXPECT_LT(loginItem.attempts.size(), 15U);
}

TEST_F(LaunchAtLoginManagerTest, TheUsersNextChoiceEndsTheRetries) {
  launchAgain();
  loginItem.isBroken = true;
  printed([&] { manager->toggle(); });
  loginItem.isBroken = false;
  manager->setIsEnabled(true);
  pass(std::chrono::minutes(1));
  EXPECT_THAT(loginItem.attempts, ElementsAre("register", "register"));
  EXPECT_TRUE(manager->isEnabled());
}

TEST_F(LaunchAtLoginManagerTest, AManagerThatHasEndedRetriesNothing) {
  launchAgain();
  loginItem.isBroken = true;
  printed([&] { manager->toggle(); });
  manager.reset();
  pass(std::chrono::minutes(1));
  EXPECT_THAT(loginItem.attempts, ElementsAre("register"));
}

}  // namespace
}  // namespace lumiwren
