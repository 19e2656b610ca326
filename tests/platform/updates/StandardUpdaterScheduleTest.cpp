#include "platform/updates/UpdaterTesting.h"

#include <gtest/gtest.h>

#include <atomic>

namespace lumiwren::testing {
namespace {

constexpr std::chrono::seconds hour{3600};
constexpr std::chrono::seconds day = 24 * hour;

class StandardUpdaterScheduleTest : public UpdaterTest {
protected:
  std::size_t checks() const { return requestsOf("/feed.xml"); }
  std::string lastCheck() { return defaults.dataForKey("SULastCheckTime").value_or("none"); }
};

TEST_F(StandardUpdaterScheduleTest, TheFirstStartChecksAndSaysNothingWhenThereIsNothing) {
  defaults.setData("SULastCheckTime", "");
  serve({.version = "1.0"});
  start();
  pass(seconds(0));
  EXPECT_TRUE(endsInSilence());
  EXPECT_EQ(checks(), 1U);
  EXPECT_EQ(lastCheck(), std::to_string(wallTime.count()));
}

TEST_F(StandardUpdaterScheduleTest, WhatIsFoundIsOfferedOnTheSide) {
  defaults.setData("SULastCheckTime", "0");
  serve({});
  start();
  EXPECT_TRUE(comesTo("found 2.0"));
  EXPECT_EQ(driver.occasion, Occasion::Scheduled);
  EXPECT_EQ(driver.stages.size(), 1U);
}

TEST_F(StandardUpdaterScheduleTest, ChecksEveryDayAfterTheLastTime) {
  serve({.version = "1.0"});
  start();
  for (int hours = 0; hours < 23; ++hours) {
    pass(hour);
  }
  EXPECT_EQ(checks(), 0U);
  for (std::size_t days = 1; days <= 3; ++days) {
    pass(hour);
    EXPECT_TRUE(runUntil([&] { return lastCheck() == std::to_string(wallTime.count()); }));
    EXPECT_EQ(checks(), days);
    for (int hours = 0; hours < 23; ++hours) {
      pass(hour);
    }
    EXPECT_EQ(checks(), days);
  }
  EXPECT_TRUE(driver.stages.empty());
}

TEST_F(StandardUpdaterScheduleTest, TimeThatTheComputerSleptThroughCounts) {
  serve({.version = "1.0"});
  start();
  wallTime += 2 * day;
  pass(hour);
  EXPECT_TRUE(runUntil([&] { return checks() == 1; }));
}

TEST_F(StandardUpdaterScheduleTest, TheBundleSaysHowOftenButNotMoreThanHourly) {
  serve({.version = "1.0"});
  bundle.strings["SUScheduledCheckInterval"] = "7200";
  start();
  pass(hour);
  EXPECT_EQ(checks(), 0U);
  pass(hour);
  EXPECT_TRUE(runUntil([&] { return lastCheck() == std::to_string(wallTime.count()); }));
  EXPECT_EQ(checks(), 1U);
  bundle.strings["SUScheduledCheckInterval"] = "1";
  start();
  pass(hour - seconds(1));
  EXPECT_EQ(checks(), 1U);
  pass(seconds(1));
  EXPECT_TRUE(runUntil([&] { return checks() == 2; }));
}

TEST_F(StandardUpdaterScheduleTest, AFailureIsSilentAndTriedAgainInAnHour) {
  defaults.setData("SULastCheckTime", "0");
  answer("/feed.xml", [](Connection &connection) { connection.respond(503, ""); });
  start();
  pass(seconds(0));
  EXPECT_TRUE(endsInSilence());
  EXPECT_EQ(lastCheck(), "0");
  pass(hour - seconds(1));
  EXPECT_EQ(checks(), 1U);
  serve({});
  pass(seconds(1));
  EXPECT_TRUE(comesTo("found 2.0"));
  EXPECT_EQ(checks(), 2U);
}

TEST_F(StandardUpdaterScheduleTest, ATimeInTheFutureOrNoTimeMeansNow) {
  serve({.version = "1.0"});
  for (const std::string &last :
       {std::to_string(wallTime.count() + 5), std::string("soon"), std::string("-7")}) {
    defaults.setData("SULastCheckTime", last);
    start();
    pass(seconds(0));
    EXPECT_TRUE(runUntil([&] { return lastCheck() == std::to_string(wallTime.count()); })) << last;
  }
  EXPECT_EQ(checks(), 3U);
}

TEST_F(StandardUpdaterScheduleTest, ASkippedVersionIsOfferedOnlyToWhoAsksAndTheNextOneToAll) {
  serve({});
  auto &updater = start();
  updater.checkForUpdates();
  ASSERT_TRUE(comesTo("found 2.0"));
  driver.reply(Choice::Skip);
  EXPECT_EQ(defaults.dataForKey("SUSkippedVersion"), "2.0");
  driver.stages.clear();
  wallTime += day;
  pass(hour);
  EXPECT_TRUE(runUntil([&] { return lastCheck() == std::to_string(wallTime.count()); }));
  EXPECT_TRUE(driver.stages.empty());

  updater.checkForUpdates();
  ASSERT_TRUE(comesTo("found 2.0"));
  driver.reply(Choice::RemindLater);
  serve({.version = "2.1"});
  wallTime += day;
  pass(hour);
  EXPECT_TRUE(comesTo("found 2.1"));
}

TEST_F(StandardUpdaterScheduleTest, WhoAsksDuringACheckIsAnsweredByIt) {
  defaults.setData("SULastCheckTime", "0");
  std::atomic<bool> isAsked = false;
  answer("/feed.xml", [&isAsked, feed = feedOf({.version = "1.0"})](Connection &connection) {
    isAsked.wait(false);
    connection.respond(200, feed);
  });
  auto &updater = start();
  pass(seconds(0));
  EXPECT_FALSE(updater.canCheckForUpdates());
  EXPECT_TRUE(driver.stages.empty());
  updater.checkForUpdates();
  EXPECT_TRUE(driver.shows("checking"));
  updater.checkForUpdates();
  EXPECT_EQ(driver.broughtToFront, 1);
  isAsked = true;
  isAsked.notify_all();
  EXPECT_TRUE(comesTo("up to date 1.0"));
  EXPECT_EQ(driver.stages.size(), 2U);
  EXPECT_EQ(checks(), 1U);
}

TEST_F(StandardUpdaterScheduleTest, AnOfferThatWaitsIsNotCheckedOver) {
  defaults.setData("SULastCheckTime", "0");
  serve({});
  start();
  ASSERT_TRUE(comesTo("found 2.0"));
  for (int hours = 0; hours < 60; ++hours) {
    pass(hour);
  }
  EXPECT_EQ(checks(), 1U);
  driver.reply(Choice::RemindLater);
  pass(hour);
  EXPECT_TRUE(runUntil([&] { return checks() == 2; }));
}

TEST_F(StandardUpdaterScheduleTest, TheScheduleEndsWithTheUpdater) {
  serve({});
  start();
  drop();
  wallTime += 2 * day;
  pass(2 * day);
  EXPECT_EQ(checks(), 0U);
  EXPECT_EQ(mainQueue.nextDeadline(), std::nullopt);
}

}  // namespace
}  // namespace lumiwren::testing
