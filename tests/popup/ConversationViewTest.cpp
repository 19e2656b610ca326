#include "popup/ConversationView.h"

#include "markdown/views/MarkdownTextView.h"
#include "popup/PopupTesting.h"
#include "support/PaintCounter.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>
#include <QWheelEvent>

#include <string>
#include <utility>
#include <vector>

namespace lumiwren {
namespace {

using namespace std::chrono_literals;

std::string lines(int count) {
  std::string text;
  for (int line = 0; line < count; ++line) {
    text += "Line " + std::to_string(line) + "\n\n";
  }
  return text;
}

class ConversationViewTest : public testing::PopupTest {
protected:
  void answer(const std::string &text, bool isLoading = true) {
    update(text, isLoading);
    controller.hostingView()->refresh();
  }
  ConversationView &conversation() { return *controller.panel()->findChild<ConversationView *>(); }
  QScrollBar &bar() { return *conversation().verticalScrollBar(); }
  std::vector<MarkdownTextView *> answers() {
    std::vector<MarkdownTextView *> result;
    for (auto *const view : controller.panel()->findChildren<MarkdownTextView *>()) {
      result.push_back(view);
    }
    return result;
  }
  /// Lets the delay pass and the scrolling that follows end.
  void settle() {
    controller.hostingView()->refresh();
    advance(100ms);
    while (conversation().isScrolling()) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
  }
  int press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QApplication::sendEvent(&conversation(), &event);
    return bar().value();
  }
  void wheel(int angle) {
    const QPointF place(50, 50);
    QWheelEvent event(place, conversation().viewport()->mapToGlobal(place), QPoint(), QPoint(0, angle),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(conversation().viewport(), &event);
  }
};

TEST_F(ConversationViewTest, FollowsAnAnswerThatGrowsATenthOfASecondLater) {
  show();
  answer("a");
  answer(lines(50));
  EXPECT_GT(bar().maximum(), 0);
  advance(99ms);
  EXPECT_EQ(bar().value(), 0);
  EXPECT_FALSE(conversation().isScrolling());
  settle();
  EXPECT_EQ(bar().value(), bar().maximum());
  const int before = bar().maximum();
  answer(lines(60));
  EXPECT_GT(bar().maximum(), before);
  settle();
  EXPECT_EQ(bar().value(), bar().maximum());
}

TEST_F(ConversationViewTest, StaysWhereTheUserHasScrolledToWhileAnAnswerGrows) {
  show();
  answer("a");
  answer(lines(50));
  settle();
  wheel(240);
  const int place = bar().value();
  EXPECT_LT(place, bar().maximum());
  answer(lines(80));
  answer(lines(90), false);
  settle();
  EXPECT_EQ(bar().value(), place);
}

TEST_F(ConversationViewTest, FollowsAgainWhenTheUserIsBackAtTheEnd) {
  show();
  answer("a");
  answer(lines(50));
  settle();
  wheel(240);
  wheel(-2400);
  EXPECT_EQ(bar().value(), bar().maximum());
  answer(lines(80));
  settle();
  EXPECT_EQ(bar().value(), bar().maximum());
}

TEST_F(ConversationViewTest, AQuestionIsShownWhereverTheUserHasScrolledTo) {
  show();
  answer(lines(50), false);
  settle();
  EXPECT_EQ(press(Qt::Key_Home), 0);
  state().addMessage("user", "And now?");
  settle();
  EXPECT_EQ(bar().value(), bar().maximum());
}

TEST_F(ConversationViewTest, ANewAnswerIsFollowedWhereverTheLastOneWasLeft) {
  show();
  answer(lines(50), false);
  settle();
  press(Qt::Key_Home);
  controller.show("other", std::nullopt, true, std::nullopt);
  queue.runPending();
  queue.runPending();
  answer("a");
  answer(lines(50));
  settle();
  EXPECT_EQ(bar().value(), bar().maximum());
}

TEST_F(ConversationViewTest, ManyChunksWithinAFrameAreDrawnOnce) {
  show();
  answer("a");
  QCoreApplication::processEvents();
  auto &view = *answers().at(0);
  const testing::PaintCounter painted(view);
  for (int chunk = 0; chunk < 100; ++chunk) {
    update(std::string(static_cast<std::size_t>(chunk) + 2, 'a'), true);
    EXPECT_EQ(view.plainText(), QStringLiteral("a"));
  }
  while (view.plainText().size() == 1 || painted.count == 0) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  EXPECT_EQ(view.plainText().size(), 101);
  EXPECT_EQ(painted.count, 1);
}

TEST_F(ConversationViewTest, TheSelectionInWhatIsThereSurvivesEveryChunk) {
  show();
  answer("The first line.\n\nThe sec");
  auto &view = *answers().at(0);
  view.setSelection(4, 9);
  for (const char *more : {"ond", " line", "\n\n- item", "\n```\ncode"}) {
    answer(state().conversationHistory().at(0).content + more);
    ASSERT_EQ(view.selectedText(), QStringLiteral("first")) << more;
  }
}

TEST_F(ConversationViewTest, ThereIsOneSelectionAndItCanBeCopied) {
  show();
  answer("first answer", false);
  state().addMessage("user", "the question");
  state().addMessage("assistant", "second answer");
  controller.hostingView()->refresh();
  EXPECT_FALSE(conversation().copySelection());
  answers().at(0)->selectAll();
  EXPECT_TRUE(conversation().copySelection());
  EXPECT_EQ(pasted(), "first answer");
  answers().at(1)->selectAll();
  EXPECT_FALSE(answers().at(0)->hasSelection());
  EXPECT_TRUE(conversation().copySelection());
  EXPECT_EQ(pasted(), "second answer");
}

TEST_F(ConversationViewTest, WhatIsSelectedIsCopiedByTheKeyboard) {
  show();
  answer("the answer", false);
  answers().at(0)->selectAll();
  QKeyEvent copy(QEvent::KeyPress, Qt::Key_C, Qt::ControlModifier);
  QApplication::sendEvent(&conversation(), &copy);
  EXPECT_EQ(pasted(), "the answer");
}

TEST_F(ConversationViewTest, TheKeyboardScrolls) {
  show();
  answer(lines(50), false);
  settle();
  EXPECT_EQ(press(Qt::Key_Home), 0);
  const int page = press(Qt::Key_Space);
  EXPECT_GT(page, 0);
  EXPECT_EQ(press(Qt::Key_Space, Qt::ShiftModifier), 0);
  EXPECT_EQ(press(Qt::Key_PageDown), page);
  EXPECT_GT(press(Qt::Key_Down), page);
  EXPECT_EQ(press(Qt::Key_End), bar().maximum());
}

TEST_F(ConversationViewTest, ASelectionDraggedBelowTheEdgeScrolls) {
  show();
  answer(lines(50), false);
  settle();
  press(Qt::Key_Home);
  auto &view = *answers().at(0);
  const auto mouse = [&](QEvent::Type type, QPoint inViewport) {
    const QPoint place = view.mapFrom(conversation().viewport(), inViewport);
    QMouseEvent event(type, QPointF(place), view.mapToGlobal(QPointF(place)), Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &event);
  };
  mouse(QEvent::MouseButtonPress, {20, 20});
  mouse(QEvent::MouseMove, {20, conversation().viewport()->height() + 30});
  while (bar().value() < bar().maximum()) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  mouse(QEvent::MouseButtonRelease, {20, conversation().viewport()->height() - 20});
  EXPECT_TRUE(view.hasSelection());
}

TEST_F(ConversationViewTest, NothingInAnAnswerStretchesThePanelOrIsCutOff) {
  const std::pair<const char *, std::string> hostile[] = {
      {"a long word", std::string(5000, 'w')},
      {"an address", "https://example.org/" + std::string(3000, 'a')},
      {"a long line of code", "```\n" + std::string(5000, 'c') + "\n```"},
      {"a hundred columns",
       [] {
         std::string header;
         std::string rule;
         for (int column = 0; column < 100; ++column) {
           header += "| Column" + std::to_string(column);
           rule += "|---";
         }
         return header + "|\n" + rule + "|\n" + header + "|";
       }()},
      {"tabs", "a\tb\tc\n\n```\n\tindented\n```"},
      {"Arabic",
       "\u0645\u0631\u062d\u0628\u0627 \u0628\u0627\u0644\u0639\u0627\u0644\u0645\n\n- "
       "\u0645\u0631\u062d\u0628\u0627"},
      {"Japanese",
       "\u65e5\u672c\u8a9e\u306e\u6587\u7ae0\u3067\u3059\u3002\u6539\u884c\u3055\u308c\u308b\u3079\u304d"
       "\u9577\u3044\u6587\u7ae0\u3067\u3059\u3002\u3082\u3063\u3068\u9577\u304f\u3057\u307e\u3059\u3002"},
      {"combining marks",
       std::string("Z\u0351\u036b\u0343\u036a\u0302\u036b\u033d\u034f\u0334\u0319\u0324algo")},
      {"emoji",
       "\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466 \U0001F1EF\U0001F1F5 \u2764\uFE0F"},
      {"one line of a megabyte", std::string(1'000'000, 'x')}};
  show();
  const QSize panel = controller.panel()->size();
  for (const auto &[name, text] : hostile) {
    answer(text, false);
    auto &view = *answers().at(0);
    EXPECT_EQ(controller.panel()->size(), panel) << name;
    EXPECT_LE(view.geometry().right(), conversation().viewport()->width()) << name;
    const int step = std::max(1, view.length() / 50);
    const bool scrolls = text.starts_with("```") || text.starts_with("|");
    for (int position = 0; position < view.length() && !scrolls; position += step) {
      const QRect rect = view.characterRect(position);
      ASSERT_GE(rect.left(), -1) << name << position;
      ASSERT_LE(rect.right(), view.width() + 1) << name << position;
      ASSERT_LE(rect.bottom(), view.height()) << name << position;
    }
  }
}

TEST_F(ConversationViewTest, FiveHundredConversationsLeaveNothingBehind) {
  for (int round = 0; round < 500; ++round) {
    show();
    answer("# Title\n- one\n- [two](https://example.org)\n");
    answer(
        "# Title\n- one\n- [two](https://example.org)\n| a | b |\n|---|---|\n| 1 | 2 |\n```c\nint a;\n```");
    state().addMessage("user", "more?");
    state().addMessage("assistant", "More.");
    controller.hostingView()->refresh();
    controller.panel()->grab();
    controller.dismiss();
    queue.runPending();
    ASSERT_EQ(controller.panel(), nullptr);
  }
  advance(3s);
}

}  // namespace
}  // namespace lumiwren
