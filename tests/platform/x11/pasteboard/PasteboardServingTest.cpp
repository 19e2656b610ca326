#include "platform/x11/pasteboard/PasteboardContract.h"
#include "platform/x11/pasteboard/PasteboardWorld.h"
#include "support/SelectionPattern.h"

#include <algorithm>
#include <csignal>
#include <string>

namespace lumiwren::testing {
namespace {

using Lines = std::vector<std::string>;

class PasteboardServingTest : public X11PasteboardTest {
protected:
  void put(PasteboardContents contents) {
    world_.pasteboard().setContents(std::move(contents), PasteboardLifetime::Lasting);
  }
};

TEST_F(PasteboardServingTest, OthersGetWhatTheOwnerGaveInTypeFormAndBytes) {
  const auto owner = world_.startOwner({"give",
                                        "UTF8_STRING",
                                        "UTF8_STRING",
                                        "8",
                                        "text",
                                        "give",
                                        "TEXT",
                                        "COMPOUND_TEXT",
                                        "8",
                                        "text",
                                        "give",
                                        "STRING",
                                        "STRING",
                                        "8",
                                        "text",
                                        "give",
                                        "x-atoms",
                                        "ATOM",
                                        "32",
                                        "12345678",
                                        "give",
                                        "x-short",
                                        "INTEGER",
                                        "16",
                                        "1234",
                                        "give",
                                        "application/x-nothing",
                                        "STRING",
                                        "8",
                                        "",
                                        "fill",
                                        "image/png",
                                        "1000003",
                                        "fill",
                                        "image/bmp",
                                        std::to_string(pictureBytes)});
  const Lines all{"get", "UTF8_STRING", "get", "TEXT",     "get", "STRING",
                  "get", "x-atoms",     "get", "x-short",  "get", "application/x-nothing",
                  "get", "image/png",   "get", "image/bmp"};
  const auto before = world_.requestor(all);
  put(world_.pasteboard().contents({}));
  EXPECT_TRUE(owner->waitForLine("lost"));
  EXPECT_EQ(world_.requestor(all), before);
  EXPECT_EQ(world_.requestor({"list"}),
            (Lines{"targets: TARGETS TIMESTAMP MULTIPLE UTF8_STRING TEXT STRING x-atoms x-short "
                   "application/x-nothing image/png image/bmp"}));
}

TEST_F(PasteboardServingTest, AnswersManyTargetsInOneRequest) {
  put({{"UTF8_STRING", bytesOf("text")}, {"image/png", patternBytes(2'000'000)}, {"x-one", bytesOf("1")}});
  const auto single =
      world_.requestor({"get", "image/png", "get", "x-none", "get", "UTF8_STRING", "get", "x-one"});
  EXPECT_EQ(single[1], "x-none: refused");
  EXPECT_EQ(world_.requestor({"multiple", "image/png", "x-none", "UTF8_STRING", "x-one", "end"}), single);
  EXPECT_EQ(world_.requestor({"multiple", "MULTIPLE", "end"}), (Lines{"MULTIPLE: refused"}));
}

TEST_F(PasteboardServingTest, TellsSinceWhenItOwnsAndRefusesRequestsFromBefore) {
  put({{"UTF8_STRING", bytesOf("text")}});
  EXPECT_EQ(world_.requestor({"times"}), (Lines{"in time"}));
}

TEST_F(PasteboardServingTest, AnswersRequestorsThatNameNoProperty) {
  put({{"UTF8_STRING", bytesOf("text")}, {"image/png", patternBytes(600'000)}});
  EXPECT_EQ(world_.requestor({"get-obsolete", "UTF8_STRING", "get-obsolete", "image/png"}),
            world_.requestor({"get", "UTF8_STRING", "get", "image/png"}));
}

TEST_F(PasteboardServingTest, ARequestorThatStallsHoldsUpNobodyAndKeepsItsOwnTransfer) {
  put({{"image/png", patternBytes(pictureBytes)}});
  const auto before = world_.requestor({"get", "image/png"});
  const auto stalled = world_.start({SELECTION_REQUESTOR, "stall", "image/png"});
  EXPECT_TRUE(stalled->waitForLine("stalled"));
  EXPECT_EQ(world_.requestor({"get", "image/png"}), before);
  put({{"UTF8_STRING", bytesOf("text")}});
  EXPECT_EQ(world_.pasteboard().string({}), "text");
}

TEST_F(PasteboardServingTest, ARequestorThatDiesLeavesNothingBehind) {
  put({{"image/png", patternBytes(pictureBytes)}});
  const auto holders = world_.holders();
  ASSERT_EQ(holders.size(), 1U);
  const ProcessWatch holder(holders[0]);
  EXPECT_EQ(world_.requestor({"die", "image/png"}), Lines());
  world_.quit();
  EXPECT_EQ(world_.requestor({"get", "image/png"}).size(), 1U);
  // A transfer that were still waiting would keep the holder for 30 s more.
  world_.otherPuts({{"UTF8_STRING", bytesOf("other")}});
  EXPECT_TRUE(holder.waitForEnd(std::chrono::seconds(10)));
}

TEST_F(PasteboardServingTest, WhatIsTemporaryIsMarkedAsNotToBeRecorded) {
  auto &pasteboard = world_.pasteboard();
  pasteboard.setString("text", PasteboardLifetime::Temporary);
  const PasteboardItem mark{"x-kde-passwordManagerHint", bytesOf("secret")};
  EXPECT_EQ(pasteboard.contents({}).back(), mark);
  pasteboard.setString("text", PasteboardLifetime::Lasting);
  const auto lasting = pasteboard.contents({});
  EXPECT_EQ(std::count(lasting.begin(), lasting.end(), mark), 0);
}

TEST_F(PasteboardServingTest, ALatin1NameOfATextHasWhatLatin1Has) {
  world_.pasteboard().setString("grün 日", PasteboardLifetime::Lasting);
  const auto contents = world_.pasteboard().contents({});
  EXPECT_NE(std::find(contents.begin(), contents.end(), PasteboardItem{"STRING", bytesOf("gr\xFCn ?")}),
            contents.end());
}

TEST_F(PasteboardServingTest, RealCommandLineToolsPasteAndCopy) {
  const auto xclip = world_.start({"xclip", "-quiet", "-i", "-selection", "clipboard"});
  xclip->write("from xclip\n");
  xclip->closeInput();
  while (world_.pasteboard().string({}) != "from xclip\n") {
  }
  put(world_.pasteboard().contents({}));
  EXPECT_EQ(xclip->wait(), 0);  // It ends when it has lost the clipboard.
  EXPECT_EQ(world_.output({"xclip", "-o", "-selection", "clipboard"}), (Lines{"from xclip"}));
}

/// Contents of a real toolkit, taken from it and put back, as another application of each toolkit sees them.
class PasteboardToolkitTest : public PasteboardServingTest {
protected:
  void expectUnchangedByARestore(const Lines &owner) {
    auto process = world_.startReady(owner);
    const auto gtk = world_.output(gtkShows);
    EXPECT_GT(gtk.size(), 3U);
    const auto before = world_.pasteboard().contents({});
    put(before);
    process.reset();
    EXPECT_EQ(world_.pasteboard().contents({}), before);
    EXPECT_EQ(world_.output(gtkShows), gtk);
  }

  const Lines gtkShows{"/usr/bin/python3", SELECTION_GTK_CLIENT, "show"};
};

TEST_F(PasteboardToolkitTest, GTKText) {
  expectUnchangedByARestore({"/usr/bin/python3", SELECTION_GTK_CLIENT, "own", "text"});
}

TEST_F(PasteboardToolkitTest, GTKPicture) {
  expectUnchangedByARestore({"/usr/bin/python3", SELECTION_GTK_CLIENT, "own", "image"});
}

#ifdef SELECTION_QT_CLIENT
TEST_F(PasteboardToolkitTest, QtText) {
  expectUnchangedByARestore({SELECTION_QT_CLIENT, "-platform", "xcb", "own", "text"});
}

TEST_F(PasteboardToolkitTest, QtPicture) {
  expectUnchangedByARestore({SELECTION_QT_CLIENT, "-platform", "xcb", "own", "image"});
}

TEST_F(PasteboardToolkitTest, AQtApplicationPastesWhatItPastedBefore) {
  auto owner = world_.startReady({SELECTION_QT_CLIENT, "-platform", "xcb", "own", "text"});
  const Lines qtShows{SELECTION_QT_CLIENT, "-platform", "xcb", "show"};
  const auto before = world_.output(qtShows);
  EXPECT_GT(before.size(), 1U);
  put(world_.pasteboard().contents({}));
  owner.reset();
  EXPECT_EQ(world_.output(qtShows), before);
}
#endif

}  // namespace
}  // namespace lumiwren::testing
