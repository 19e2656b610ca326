#include "platform/x11/pasteboard/PasteboardContract.h"
#include "platform/x11/pasteboard/PasteboardWorld.h"
#include "support/SelectionPattern.h"

#include <chrono>
#include <csignal>
#include <future>
#include <string>
#include <thread>

namespace lumiwren::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto atOnce = 1s;

class PasteboardReadingTest : public X11PasteboardTest {
protected:
  X11Pasteboard &pasteboard() { return pasteboard_; }

private:
  X11Pasteboard &pasteboard_ = world_.pasteboard();
};

TEST_F(PasteboardReadingTest, CommandsAndDescriptionsAreNotAskedForAndEqualTypesComeOnce) {
  const auto owner = world_.startOwner({"give",
                                        "UTF8_STRING",
                                        "UTF8_STRING",
                                        "8",
                                        "a",
                                        "offer",
                                        "SAVE_TARGETS",
                                        "offer",
                                        "DELETE",
                                        "offer",
                                        "INSERT_SELECTION",
                                        "offer",
                                        "INSERT_PROPERTY",
                                        "offer",
                                        "TIMESTAMP",
                                        "offer",
                                        "MULTIPLE",
                                        "give",
                                        "UTF8_STRING",
                                        "UTF8_STRING",
                                        "8",
                                        "a"});
  EXPECT_EQ(pasteboard().contents({}), (PasteboardContents{{"UTF8_STRING", bytesOf("a")}}));
  EXPECT_EQ(owner->readLine(), "asked TARGETS");
  EXPECT_EQ(owner->readLine(), "asked UTF8_STRING");
  world_.requestor({"get", "application/x-end"});
  EXPECT_EQ(owner->readLine(), "asked application/x-end");
}

TEST_F(PasteboardReadingTest, FortyTypesAreAskedForAllAtOnce) {
  std::vector<std::string> words{"together"};
  PasteboardContents expected;
  for (int index = 0; index < 40; ++index) {
    const auto type = "application/x-type-" + std::to_string(index);
    const auto text = "contents " + std::to_string(index);
    words.insert(words.end(), {"give", type, type, "8", text});
    expected.push_back({type, bytesOf(text)});
  }
  const auto owner = world_.startOwner(words);
  EXPECT_EQ(pasteboard().contents({}), expected);
}

TEST_F(PasteboardReadingTest, PicturesOfManyMegabytesComeInIncrementsBesideEachOther) {
  const auto owner =
      world_.startOwner({"fill", "image/png", std::to_string(pictureBytes), "fill", "image/bmp", "5000000",
                         "give", "UTF8_STRING", "UTF8_STRING", "8", "text"});
  EXPECT_EQ(pasteboard().contents({}), (PasteboardContents{{"image/png", patternBytes(pictureBytes)},
                                                           {"image/bmp", patternBytes(5'000'000)},
                                                           {"UTF8_STRING", bytesOf("text")}}));
}

TEST_F(PasteboardReadingTest, ATypeThatIsRefusedIsLeftOut) {
  const auto owner =
      world_.startOwner({"offer", "image/png", "give", "UTF8_STRING", "UTF8_STRING", "8", "text"});
  EXPECT_EQ(pasteboard().contents({}), (PasteboardContents{{"UTF8_STRING", bytesOf("text")}}));
}

TEST_F(PasteboardReadingTest, ATypeThatNeverComesIsLeftOut) {
  const auto owner =
      world_.startOwner({"silent", "image/png", "give", "UTF8_STRING", "UTF8_STRING", "8", "text"});
  EXPECT_EQ(pasteboard().contents({}), (PasteboardContents{{"UTF8_STRING", bytesOf("text")}}));
}

TEST_F(PasteboardReadingTest, ASlowOwnerIsWaitedFor) {
  const auto owner = world_.startOwner({"delay", "300", "give", "UTF8_STRING", "UTF8_STRING", "8", "text"});
  EXPECT_EQ(pasteboard().contents({}), (PasteboardContents{{"UTF8_STRING", bytesOf("text")}}));
  EXPECT_EQ(pasteboard().string({}), "text");
}

TEST_F(PasteboardReadingTest, ASilentOwnerCostsTheLimitAndHoldsUpNothingElse) {
  const auto owner = world_.startOwner({"silent", "TARGETS", "silent", "UTF8_STRING"});
  (void)pasteboard().changeCount();
  auto contents = std::async(std::launch::async, [this] { return pasteboard().contents({}); });
  auto string = std::async(std::launch::async, [this] { return pasteboard().string({}); });
  EXPECT_TRUE(owner->waitForLine("asked TARGETS"));
  const auto before = Clock::now();
  (void)pasteboard().changeCount();
  EXPECT_LT(Clock::now() - before, atOnce);
  EXPECT_EQ(contents.wait_for(0s), std::future_status::timeout);
  EXPECT_EQ(contents.get(), PasteboardContents());
  EXPECT_EQ(string.get(), std::nullopt);
  EXPECT_LT(Clock::now() - before, 10s);
  pasteboard().setString("ours", PasteboardLifetime::Lasting);
  EXPECT_EQ(pasteboard().string({}), "ours");
}

TEST_F(PasteboardReadingTest, AHangingReadEndsAtOnceWhenItIsStopped) {
  const auto owner = world_.startOwner({"silent", "TARGETS"});
  std::stop_source stop;
  auto contents = std::async(std::launch::async, [&] { return pasteboard().contents(stop.get_token()); });
  EXPECT_TRUE(owner->waitForLine("asked TARGETS"));
  const auto before = Clock::now();
  stop.request_stop();
  EXPECT_THROW(contents.get(), CancellationError);
  EXPECT_LT(Clock::now() - before, atOnce);
}

TEST_F(PasteboardReadingTest, AnOwnerIsHeardOutAlsoAfterTheReadWasStopped) {
  const auto owner =
      world_.startOwner({"fill", "image/png", std::to_string(pictureBytes), "silent", "image/bmp"});
  std::stop_source stop;
  auto contents = std::async(std::launch::async, [&] { return pasteboard().contents(stop.get_token()); });
  EXPECT_TRUE(owner->waitForLine("asked image/bmp"));
  stop.request_stop();
  EXPECT_THROW(contents.get(), CancellationError);
  EXPECT_TRUE(owner->waitForLine("finished image/png"));
}

TEST_F(PasteboardReadingTest, WhatAnOwnerGaveBeforeItDiedIsKept) {
  const auto owner =
      world_.startOwner({"give", "UTF8_STRING", "UTF8_STRING", "8", "text", "fill", "image/png",
                         std::to_string(pictureBytes), "silent", "image/bmp", "die-after", "3"});
  const auto before = Clock::now();
  EXPECT_EQ(pasteboard().contents({}), (PasteboardContents{{"UTF8_STRING", bytesOf("text")}}));
  EXPECT_LT(Clock::now() - before, atOnce);
}

TEST_F(PasteboardReadingTest, IncrementsThatStopComingAreLeftOut) {
  const auto owner = world_.startOwner({"give", "UTF8_STRING", "UTF8_STRING", "8", "text", "fill",
                                        "image/png", std::to_string(pictureBytes), "stall-after", "3"});
  EXPECT_EQ(pasteboard().contents({}), (PasteboardContents{{"UTF8_STRING", bytesOf("text")}}));
}

TEST_F(PasteboardReadingTest, AnOwnerThatListsNothingIsAskedForText) {
  const auto owner = world_.startOwner(
      {"refuse-targets", "give", "STRING", "STRING", "8", "old", "give", "TEXT", "STRING", "8", "old"});
  EXPECT_EQ(pasteboard().contents({}),
            (PasteboardContents{{"STRING", bytesOf("old")}, {"TEXT", bytesOf("old"), "STRING"}}));
}

TEST_F(PasteboardReadingTest, AReadBeginsAgainWhenTheOwnerChanges) {
  const auto owner = world_.startOwner({"give", "UTF8_STRING", "UTF8_STRING", "8", "old", "give", "text/html",
                                        "text/html", "8", "<b>old</b>", "yield-at", "text/html", "new"});
  EXPECT_EQ(pasteboard().contents({}), (PasteboardContents{{"UTF8_STRING", bytesOf("new")}}));
}

TEST_F(PasteboardReadingTest, SeveralReadAtTheSameTime) {
  // Enough for increments, and little against what a busy machine gets done within the limit.
  const auto owner =
      world_.startOwner({"fill", "image/png", "600000", "give", "UTF8_STRING", "UTF8_STRING", "8", "text"});
  const PasteboardContents expected{{"image/png", patternBytes(600'000)}, {"UTF8_STRING", bytesOf("text")}};
  std::vector<std::future<PasteboardContents>> reads;
  for (int index = 0; index < 4; ++index) {
    reads.push_back(std::async(std::launch::async, [this] { return pasteboard().contents({}); }));
  }
  EXPECT_EQ(pasteboard().string({}), "text");
  for (auto &read : reads) {
    EXPECT_EQ(read.get(), expected);
  }
}

TEST_F(PasteboardReadingTest, TheTextIsTakenUnderTheBestOfItsNames) {
  auto owner = world_.startOwner({"give", "TEXT", "COMPOUND_TEXT", "8", "gr\xFCn"});
  EXPECT_EQ(pasteboard().string({}), "grün");
  owner =
      world_.startOwner({"give", "TEXT", "STRING", "8", "text", "give", "STRING", "STRING", "8", "gr\xFCn"});
  EXPECT_EQ(pasteboard().string({}), "grün");
  owner = world_.startOwner({"give", "STRING", "STRING", "8", "?", "give", "text/plain;charset=utf-8",
                             "text/plain;charset=utf-8", "8", "日本語"});
  EXPECT_EQ(pasteboard().string({}), "日本語");
  owner = world_.startOwner(
      {"give", "STRING", "STRING", "8", "?", "give", "UTF8_STRING", "UTF8_STRING", "8", "broken \xFF here"});
  EXPECT_EQ(pasteboard().string({}), "broken \xEF\xBF\xBD here");
}

TEST_F(PasteboardReadingTest, ChangesAreCountedWhenTheServerHasSeenThem) {
  const auto before = pasteboard().changeCount();
  auto owner = world_.startOwner({"give", "UTF8_STRING", "UTF8_STRING", "8", "text"});
  EXPECT_EQ(pasteboard().changeCount(), before + 1);
  owner = world_.startOwner({"give", "UTF8_STRING", "UTF8_STRING", "8", "text"});
  EXPECT_EQ(pasteboard().changeCount(), before + 2);
}

TEST_F(PasteboardReadingTest, ThePrimarySelectionIsCopiedFromTheApplicationOfTheWindowOnly) {
  const auto terminal = world_.start(
      {SELECTION_OWNER, "own", "PRIMARY", "give", "UTF8_STRING", "UTF8_STRING", "8", "selected text"});
  const auto windowLine = terminal->readLine().value();
  EXPECT_TRUE(terminal->waitForLine("ready"));
  const auto window = static_cast<std::uint32_t>(std::stoul(windowLine.substr(windowLine.find(' '))));
  const auto other = world_.start({SELECTION_OWNER, "give", "UTF8_STRING", "UTF8_STRING", "8", "user's"});
  const auto otherLine = other->readLine().value();
  EXPECT_TRUE(other->waitForLine("ready"));
  const auto otherWindow = static_cast<std::uint32_t>(std::stoul(otherLine.substr(otherLine.find(' '))));

  const auto count = pasteboard().changeCount();
  EXPECT_FALSE(pasteboard().copyPrimary(otherWindow, {}));
  EXPECT_EQ(pasteboard().changeCount(), count);
  // Any window of the application will do.
  EXPECT_TRUE(pasteboard().copyPrimary(window + 1, {}));
  EXPECT_EQ(pasteboard().string({}), "selected text");
  EXPECT_EQ(pasteboard().changeCount(), count + 1);
}

TEST_F(PasteboardReadingTest, NobodyOwnsThePrimarySelection) {
  EXPECT_FALSE(pasteboard().copyPrimary(1, {}));
}

TEST_F(PasteboardReadingTest, AReadEndsWhenTheServerGoes) {
  const auto owner = world_.startOwner({"silent", "TARGETS"});
  auto contents = std::async(std::launch::async, [this] { return pasteboard().contents({}); });
  EXPECT_TRUE(owner->waitForLine("asked TARGETS"));
  world_.endServer();
  EXPECT_EQ(contents.get(), PasteboardContents());
  EXPECT_EQ(pasteboard().string({}), std::nullopt);
  (void)pasteboard().changeCount();
  pasteboard().setString("nowhere", PasteboardLifetime::Lasting);
}

TEST_F(PasteboardReadingTest, AServerThatHangsHoldsUpNeitherTheCallerNorTheEnd) {
  (void)pasteboard().changeCount();
  world_.server().process().kill(SIGSTOP);
  const auto before = Clock::now();
  (void)pasteboard().changeCount();
  EXPECT_EQ(pasteboard().contents({}), PasteboardContents());
  world_.quit();
  EXPECT_LT(Clock::now() - before, 10s);
  world_.server().process().kill(SIGCONT);
}

TEST(PasteboardWithoutServer, IsEmptyAndNeverChanges) {
  setenv("DISPLAY", ":4242", 1);
  X11Pasteboard pasteboard(LUMIWREN_PASTEBOARD);
  EXPECT_EQ(pasteboard.contents({}), PasteboardContents());
  EXPECT_EQ(pasteboard.string({}), std::nullopt);
  pasteboard.setString("nowhere", PasteboardLifetime::Lasting);
  pasteboard.setContents({}, PasteboardLifetime::Lasting);
  EXPECT_EQ(pasteboard.changeCount(), 0);
}

}  // namespace
}  // namespace lumiwren::testing
