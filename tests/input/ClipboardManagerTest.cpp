#include "input/ClipboardManager.h"

#include "ai/LumiwrenError.h"
#include "base/Task.h"
#include "platform/testing/FakeAccessibilityTrust.h"
#include "platform/testing/FakePasteboard.h"
#include "platform/testing/FakeSelectionCopy.h"

#include <gtest/gtest.h>

#include <future>
#include <stop_token>
#include <string>

namespace lumiwren {
namespace {

const Bytes picture{0x89, 'P', 'N', 'G', 0, 0xff};

class ClipboardManagerTest : public ::testing::Test {
protected:
  ClipboardManagerTest() {
    pasteboard.otherPuts(before);
    front.onCopy = [this] { pasteboard.copy(); };
  }

  std::string capture(const std::stop_token &token = {}) {
    return ClipboardManager(trust, pasteboard, front).captureSelectedText(token);
  }
  LumiwrenError::Case failure() {
    try {
      capture();
    } catch (const LumiwrenError &error) {
      return error.kind();
    }
    ADD_FAILURE() << "no LumiwrenError was thrown";
    return LumiwrenError::Case::NetworkError;
  }

  const PasteboardContents before = {{"UTF8_STRING", {'o', 'l', 'd'}}, {"image/png", picture}};
  testing::FakeAccessibilityTrust trust;
  testing::FakePasteboard pasteboard;
  testing::FakeSelectionCopy front;
};

TEST_F(ClipboardManagerTest, ReturnsTheSelectedTextAndPutsEveryTypeBack) {
  pasteboard.setNextCopy(testing::FakePasteboard::text("selected"));
  EXPECT_EQ(capture(), "selected");
  EXPECT_EQ(pasteboard.current(), before);
  ASSERT_EQ(pasteboard.puts().size(), 1U);
  EXPECT_EQ(pasteboard.puts().front().lifetime, PasteboardLifetime::Lasting);
  EXPECT_EQ(front.copies, 1);
}

TEST_F(ClipboardManagerTest, AnEmptyPasteboardComesBackEmpty) {
  pasteboard.otherPuts({});
  pasteboard.setNextCopy(testing::FakePasteboard::text("selected"));
  EXPECT_EQ(capture(), "selected");
  EXPECT_TRUE(pasteboard.current().empty());
  EXPECT_EQ(pasteboard.puts().size(), 1U);
}

TEST_F(ClipboardManagerTest, ATextOfBlanksCountsAndIsNotTrimmed) {
  pasteboard.setNextCopy(testing::FakePasteboard::text(" \n\t "));
  EXPECT_EQ(capture(), " \n\t ");
}

TEST_F(ClipboardManagerTest, SelectingTheSameTextThatIsOnThePasteboardAlreadyStillYieldsIt) {
  pasteboard.otherPuts(testing::FakePasteboard::text("same"));
  pasteboard.setNextCopy(testing::FakePasteboard::text("same"));
  EXPECT_EQ(capture(), "same");
}

TEST_F(ClipboardManagerTest, ACopyThatChangesNothingMeansNoTextSelectedAndRestores) {
  EXPECT_EQ(failure(), LumiwrenError::Case::NoTextSelected);
  EXPECT_EQ(pasteboard.current(), before);
  EXPECT_EQ(pasteboard.puts().size(), 1U);
}

TEST_F(ClipboardManagerTest, ACopyWithoutPlainTextMeansClipboardEmptyAndRestores) {
  pasteboard.setNextCopy(PasteboardContents{{"image/png", picture}});
  EXPECT_EQ(failure(), LumiwrenError::Case::ClipboardEmpty);
  EXPECT_EQ(pasteboard.current(), before);
}

TEST_F(ClipboardManagerTest, AnEmptyTextMeansClipboardEmptyAndRestores) {
  pasteboard.setNextCopy(testing::FakePasteboard::text(""));
  EXPECT_EQ(failure(), LumiwrenError::Case::ClipboardEmpty);
  EXPECT_EQ(pasteboard.current(), before);
}

TEST_F(ClipboardManagerTest, WithoutTrustNothingIsTouched) {
  trust.trusted = false;
  EXPECT_EQ(failure(), LumiwrenError::Case::AccessibilityNotGranted);
  EXPECT_EQ(front.copies, 0);
  EXPECT_TRUE(pasteboard.puts().empty());
}

TEST_F(ClipboardManagerTest, StoppedDuringTheWaitItLeavesWhatTheCopyMade) {
  const PasteboardContents copied = testing::FakePasteboard::text("selected");
  pasteboard.setNextCopy(copied);
  std::stop_source stop;
  front.onCopy = [&] {
    pasteboard.copy();
    stop.request_stop();
  };
  EXPECT_THROW(capture(stop.get_token()), CancellationError);
  EXPECT_EQ(pasteboard.current(), copied);
  EXPECT_TRUE(pasteboard.puts().empty());
}

TEST_F(ClipboardManagerTest, StoppedWhileSavingItPostsNoCopy) {
  pasteboard.setSilent(true);
  std::stop_source stop;
  auto captured = std::async(std::launch::async, [&] { return capture(stop.get_token()); });
  pasteboard.waitForReaders();
  stop.request_stop();
  EXPECT_THROW(captured.get(), CancellationError);
  EXPECT_EQ(front.copies, 0);
  EXPECT_TRUE(pasteboard.puts().empty());
}

TEST_F(ClipboardManagerTest, StoppedWhileTheCopiedTextDoesNotComeItRestores) {
  pasteboard.setNextCopy(testing::FakePasteboard::text("selected"));
  std::stop_source stop;
  front.onCopy = [&] {
    pasteboard.copy();
    pasteboard.setSilent(true);
  };
  auto captured = std::async(std::launch::async, [&] { return capture(stop.get_token()); });
  pasteboard.waitForReaders();
  stop.request_stop();
  EXPECT_THROW(captured.get(), CancellationError);
  EXPECT_EQ(pasteboard.current(), before);
}

}  // namespace
}  // namespace lumiwren
