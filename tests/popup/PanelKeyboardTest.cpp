#include "markdown/views/SelectableTextView.h"
#include "popup/ActivatingTextField.h"
#include "popup/ConversationView.h"
#include "popup/PopupTesting.h"
#include "ui/Palette.h"

#include <QApplication>
#include <QImage>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

/// What the panel does with keys once it has the keyboard.
class PanelKeyboard : public testing::PopupTest {
protected:
  void showAnswer() {
    show();
    update("A");
    controller.hostingView()->refresh();
    controller.panel()->makeKey();
    controller.panel()->activateWindow();
    QCoreApplication::processEvents();
    field().setFocus(Qt::MouseFocusReason);
    if (!field().hasFocus()) {
      throw std::runtime_error("the panel has no keyboard");
    }
  }
  ActivatingTextField &field() { return *controller.panel()->findChild<ActivatingTextField *>(); }
  QPushButton &button(const char *name) { return testing::button(*controller.panel(), name); }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString &text = {}) {
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      QKeyEvent event(type, key, modifiers, text);
      QApplication::sendEvent(QApplication::focusWidget(), &event);
    }
  }
  void type(const QString &text) {
    for (const QChar character : text) {
      press(Qt::Key_unknown, Qt::NoModifier, character);
    }
  }
  void compose(const QString &preedit, const QString &commit = {}) {
    QInputMethodEvent event(preedit, {});
    event.setCommitString(commit);
    QApplication::sendEvent(&field(), &event);
  }
  static QString focused() {
    auto *const widget = QApplication::focusWidget();
    return widget ? widget->accessibleName().isEmpty() ? static_cast<QPushButton *>(widget)->text()
                                                       : widget->accessibleName()
                  : QString();
  }
  std::vector<std::string> focusedAfter(int count, Qt::Key key) {
    std::vector<std::string> result;
    for (int index = 0; index < count; ++index) {
      press(key, key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
      result.push_back(focused().toStdString());
    }
    return result;
  }
  using Names = std::vector<std::string>;
  /// How many pixels have the colour of a focus ring.
  static int ringPixels(QWidget &view) {
    const QImage picture = view.grab().toImage();
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) {
        const QColor seen = picture.pixelColor(x, y);
        const QColor ring = lumiwrenPurple();
        count += std::abs(seen.red() - ring.red()) + std::abs(seen.green() - ring.green()) +
                             std::abs(seen.blue() - ring.blue()) <
                         60
                     ? 1
                     : 0;
      }
    }
    return count;
  }
};

TEST_F(PanelKeyboard, TabGoesFromTopToBottomAndRound) {
  showAnswer();
  field().setText(QStringLiteral("why"));
  EXPECT_EQ(focusedAfter(5, Qt::Key_Tab),
            (Names{"Send", "Copy Result", "Close", "Conversation", "Follow-up question"}));
  EXPECT_EQ(focusedAfter(5, Qt::Key_Backtab),
            (Names{"Conversation", "Close", "Copy Result", "Send", "Follow-up question"}));
}

TEST_F(PanelKeyboard, TabLeavesOutWhatIsDisabled) {
  showAnswer();
  ASSERT_FALSE(button("Send").isEnabled());
  EXPECT_EQ(focusedAfter(4, Qt::Key_Tab),
            (Names{"Copy Result", "Close", "Conversation", "Follow-up question"}));
}

TEST_F(PanelKeyboard, TabGoesOnFromAClickedAnswerAsFromTheConversation) {
  showAnswer();
  auto &answer = *controller.panel()->findChild<SelectableTextView *>();
  answer.setFocus(Qt::MouseFocusReason);
  EXPECT_EQ(focusedAfter(1, Qt::Key_Tab), Names{"Follow-up question"});
  answer.setFocus(Qt::MouseFocusReason);
  EXPECT_EQ(focusedAfter(2, Qt::Key_Backtab), (Names{"Conversation", "Close"}));
}

class PanelKeyboardKeys : public PanelKeyboard, public ::testing::WithParamInterface<Qt::Key> {};

class PressingKeys : public PanelKeyboardKeys {};

TEST_P(PressingKeys, PressTheFocusedButton) {
  showAnswer();
  button("Copy Result").setFocus();
  press(GetParam());
  EXPECT_EQ(pasteboard.puts().size(), 1U);
  button("Close").setFocus();
  press(GetParam());
  queue.runPending();
  EXPECT_FALSE(controller.panel());
}

INSTANTIATE_TEST_SUITE_P(All, PressingKeys, ::testing::Values(Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter));

class SendingKeys : public PanelKeyboardKeys {};

TEST_P(SendingKeys, SendTheQuestion) {
  showAnswer();
  http.expect(200, {"data: [DONE]\n\n"});
  type(QStringLiteral("why"));
  press(GetParam());
  ASSERT_EQ(history().size(), 3U);
  EXPECT_EQ(history()[1].content, "why");
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
}

INSTANTIATE_TEST_SUITE_P(All, SendingKeys, ::testing::Values(Qt::Key_Return, Qt::Key_Enter));

TEST_F(PanelKeyboard, TheFocusIsSeenOnEveryControlButTheField) {
  showAnswer();
  auto &view = *controller.hostingView();
  const int none = ringPixels(view);
  EXPECT_EQ(none, 0);
  for (QWidget *const control : {static_cast<QWidget *>(&button("Close")),
                                 static_cast<QWidget *>(controller.panel()->findChild<ConversationView *>()),
                                 static_cast<QWidget *>(&button("Copy Result"))}) {
    control->setFocus(Qt::TabFocusReason);
    EXPECT_GT(ringPixels(view), 20) << focused().toStdString();
    field().setFocus(Qt::TabFocusReason);
    EXPECT_EQ(ringPixels(view), 0);
  }
}

TEST_F(PanelKeyboard, TheConversationIsScrolledByItsKeys) {
  showAnswer();
  std::string lines;
  for (int line = 0; line < 100; ++line) {
    lines += "line\n\n";
  }
  update(lines);
  controller.hostingView()->refresh();
  auto &conversation = *controller.panel()->findChild<ConversationView *>();
  conversation.setFocus(Qt::TabFocusReason);
  press(Qt::Key_PageDown);
  const int page = conversation.verticalScrollBar()->value();
  EXPECT_GT(page, 0);
  press(Qt::Key_Up);
  EXPECT_LT(conversation.verticalScrollBar()->value(), page);
}

TEST_F(PanelKeyboard, TypingGoesOnAfterTheAnswer) {
  showAnswer();
  http.expect(200, {"data: [DONE]\n\n"});
  type(QStringLiteral("why"));
  press(Qt::Key_Return);
  controller.hostingView()->refresh();
  EXPECT_FALSE(field().isEnabled());
  EXPECT_EQ(QApplication::focusWidget(), nullptr);
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
  controller.hostingView()->refresh();
  ASSERT_TRUE(field().hasFocus());
  type(QStringLiteral("and"));
  EXPECT_EQ(field().text(), QStringLiteral("and"));
}

TEST_F(PanelKeyboard, TypingGoesOnAfterTheSendButtonWasPressedByAKey) {
  showAnswer();
  http.expect(200, {"data: [DONE]\n\n"});
  type(QStringLiteral("why"));
  press(Qt::Key_Tab);
  ASSERT_EQ(focused(), QStringLiteral("Send"));
  press(Qt::Key_Space);
  controller.hostingView()->refresh();
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
  controller.hostingView()->refresh();
  EXPECT_TRUE(field().hasFocus());
}

TEST_F(PanelKeyboard, WhatIsTypedCanBeUndoneAndDoneAgain) {
  showAnswer();
  type(QStringLiteral("why"));
  press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(field().text(), QString());
  press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(field().text(), QStringLiteral("why"));
}

TEST_F(PanelKeyboard, CopyInTheFieldCopiesWhatIsSelectedThereElseInTheConversation) {
  showAnswer();
  press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_TRUE(pasteboard.puts().empty());
  for (auto *const turn : controller.panel()->findChildren<SelectableTextView *>()) {
    if (turn->isVisible()) {
      turn->selectAll();
    }
  }
  press(Qt::Key_C, Qt::ControlModifier);
  ASSERT_EQ(pasteboard.puts().size(), 1U);
  EXPECT_EQ(pasted(), "A");
  EXPECT_TRUE(field().hasFocus());
  field().setText(QStringLiteral("mine"));
  field().selectAll();
  press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(pasteboard.puts().size(), 1U);  // The toolkit copies it.
}

TEST_F(PanelKeyboard, APreeditTakesThePlaceholdersPlace) {
  showAnswer();
  const auto inkWidth = [&] {
    const QImage picture = field().grab().toImage();
    const QRgb paper = picture.pixel(picture.width() - 1, 0);
    int right = 0;
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) {
        right = picture.pixel(x, y) != paper ? std::max(right, x) : right;
      }
    }
    return right;
  };
  const int placeholder = inkWidth();
  EXPECT_GT(placeholder, 100);
  compose(QString::fromUtf8("\u304B"));
  EXPECT_LT(inkWidth(), 40);
  EXPECT_EQ(field().text(), QString());
  EXPECT_FALSE(button("Send").isEnabled());
  compose({});
  EXPECT_EQ(inkWidth(), placeholder);
}

TEST_F(PanelKeyboard, ReturnSendsNothingBeforeThePreeditIsCommitted) {
  showAnswer();
  type(QStringLiteral("a"));
  compose(QString::fromUtf8("\u304B"));
  press(Qt::Key_Return);
  EXPECT_EQ(history().size(), 1U);
  compose({}, QString::fromUtf8("\u5BB6"));
  EXPECT_EQ(field().text(), QString::fromUtf8("a\u5BB6"));
  http.expect(200, {"data: [DONE]\n\n"});
  press(Qt::Key_Return);
  ASSERT_EQ(history().size(), 3U);
  EXPECT_EQ(history()[1].content, "a\xE5\xAE\xB6");
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
}

TEST_F(PanelKeyboard, TheSendButtonSendsThePreeditToo) {
  showAnswer();
  type(QStringLiteral("a"));
  compose(QStringLiteral("b"));
  http.expect(200, {"data: [DONE]\n\n"});
  button("Send").click();
  ASSERT_EQ(history().size(), 3U);
  EXPECT_EQ(history()[1].content, "ab");
  EXPECT_EQ(field().text(), QString());
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
}

TEST_F(PanelKeyboard, LoadingThatBeginsDuringAPreeditLosesNothing) {
  showAnswer();
  type(QStringLiteral("a"));
  compose(QStringLiteral("bc"));
  state().setIsLoading(true);
  controller.hostingView()->refresh();
  EXPECT_FALSE(field().isEnabled());
  EXPECT_EQ(field().text(), QStringLiteral("abc"));
  state().setIsLoading(false);
  controller.hostingView()->refresh();
  EXPECT_TRUE(field().hasFocus());
  EXPECT_EQ(field().text(), QStringLiteral("abc"));
  type(QStringLiteral("d"));
  EXPECT_EQ(field().text(), QStringLiteral("abcd"));
}

TEST_F(PanelKeyboard, APanelThatIsShownAgainHasNoFocusOfTheOneBefore) {
  showAnswer();
  button("Copy Result").setFocus();
  controller.dismiss();
  queue.runPending();
  EXPECT_EQ(QApplication::focusWidget(), nullptr);
}

}  // namespace
}  // namespace lumiwren
