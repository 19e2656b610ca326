#include "popup/ExplanationPopupView.h"

#include "markdown/views/MarkdownTextView.h"
#include "markdown/views/PlainTextView.h"
#include "popup/ConversationRows.h"
#include "popup/PopupTesting.h"
#include "popup/SourceTextLabel.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QWindow>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace lumiwren {
namespace {

using namespace std::chrono_literals;

std::string repeated(std::string_view text, int count) {
  std::string result;
  for (int index = 0; index < count; ++index) {
    result += text;
  }
  return result;
}

TEST(TruncatedOriginalText, OneHundredCharactersAreShownWhole) {
  EXPECT_EQ(ExplanationPopupView::truncatedOriginalText(repeated("x", 100)).toStdString(),
            repeated("x", 100));
}

TEST(TruncatedOriginalText, OfOneHundredAndOneTheFirstHundredAreShownAndThreeDots) {
  EXPECT_EQ(ExplanationPopupView::truncatedOriginalText(repeated("x", 101)).toStdString(),
            repeated("x", 100) + "...");
}

TEST(TruncatedOriginalText, CountsWhatAReaderTakesForOneCharacterAsOne) {
  const std::string family = "\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7";
  const std::string accented = "e\xCC\x81";
  for (const auto &character : {family, accented}) {
    EXPECT_EQ(ExplanationPopupView::truncatedOriginalText(repeated(character, 100)).toStdString(),
              repeated(character, 100));
    EXPECT_EQ(ExplanationPopupView::truncatedOriginalText(repeated(character, 101)).toStdString(),
              repeated(character, 100) + "...");
  }
}

TEST(TruncatedOriginalText, OfTheEmptyTextIsEmpty) {
  EXPECT_EQ(ExplanationPopupView::truncatedOriginalText(""), QString());
}

TEST(AllContent, IsEveryAnswerWithAnEmptyLineBetweenTrimmed) {
  EXPECT_EQ(ExplanationPopupView::allContent({{.role = "assistant", .content = " A "},
                                              {.role = "user", .content = "Q"},
                                              {.role = "assistant", .content = "B"}}),
            "A \n\nB");
}

TEST(AllContent, OfNoAnswerIsEmpty) {
  EXPECT_EQ(ExplanationPopupView::allContent({{.role = "user", .content = "Q"}}), "");
  EXPECT_EQ(ExplanationPopupView::allContent({}), "");
}

class ExplanationPopupViewTest : public testing::PopupTest {
protected:
  template <typename T>
  std::vector<T *> seen() {
    controller.hostingView()->refresh();
    std::vector<T *> result;
    for (auto *const candidate : controller.panel()->findChildren<T *>()) {
      if (candidate->isVisible()) {
        result.push_back(candidate);
      }
    }
    return result;
  }
  QLineEdit &field() { return *controller.panel()->findChild<QLineEdit *>(); }
  void pressReturn() {
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(&field(), &press);
  }
  QPushButton &button(const char *name) { return testing::button(*controller.panel(), name); }
};

TEST_F(ExplanationPopupViewTest, AnEmptyHistoryWhileLoadingShowsOnlyTheLoadingRow) {
  show("source", std::nullopt, true, "failure");
  EXPECT_EQ(seen<LoadingRow>().size(), 1U);
  EXPECT_TRUE(seen<ErrorRow>().empty());
  EXPECT_TRUE(seen<MarkdownTextView>().empty());
}

TEST_F(ExplanationPopupViewTest, TheLoadingRowGoesWithTheFirstAnswerThoughItIsStillLoading) {
  show("source", std::nullopt, true);
  update("A", true);
  EXPECT_TRUE(seen<LoadingRow>().empty());
  ASSERT_EQ(seen<MarkdownTextView>().size(), 1U);
  EXPECT_EQ(seen<MarkdownTextView>()[0]->plainText(), QStringLiteral("A"));
}

TEST_F(ExplanationPopupViewTest, AnErrorWithAnEmptyHistoryIsShownAlone) {
  show("source", std::nullopt, false, "<b>failure</b>");
  ASSERT_EQ(seen<ErrorRow>().size(), 1U);
  EXPECT_EQ(seen<ErrorRow>()[0]->findChild<PlainTextView *>()->plainText(), QStringLiteral("<b>failure</b>"));
}

TEST_F(ExplanationPopupViewTest, AnErrorWithAHistoryIsShownBelowTheLastMessage) {
  show();
  update("A");
  update(std::nullopt, false, "failure");
  ASSERT_EQ(seen<ErrorRow>().size(), 1U);
  ASSERT_EQ(seen<MarkdownTextView>().size(), 1U);
  EXPECT_GT(seen<ErrorRow>()[0]->geometry().top(), seen<MarkdownTextView>()[0]->geometry().bottom());
}

TEST_F(ExplanationPopupViewTest, TheSourceTextIsPlainText) {
  show("<b>bold</b>");
  const auto labels = seen<QLabel>();
  ASSERT_FALSE(labels.empty());
  for (const auto *label : labels) {
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
  }
  EXPECT_EQ(labels[0]->text(), QStringLiteral("<b>bold</b>"));
}

TEST_F(ExplanationPopupViewTest, TheSourceTextHasTwoLinesAtMost) {
  const auto linesDrawn = [&](const std::string &text) {
    show(text);
    queue.runPending();  // an open panel has its content one block later
    controller.hostingView()->refresh();
    QCoreApplication::sendPostedEvents();  // what asks for another layout among them
    auto *const label = controller.panel()->findChild<SourceTextLabel *>();
    QImage image(label->size(), QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    label->render(&image, {}, {}, QWidget::DrawChildren);
    int lines = 0;
    bool isInk = false;
    for (int y = 0; y < image.height(); ++y) {
      bool hasInk = false;
      for (int x = 0; x < image.width(); ++x) {
        hasInk |= image.pixelColor(x, y).alpha() > 0;
      }
      lines += hasInk && !isInk ? 1 : 0;
      isInk = hasInk;
    }
    return lines;
  };
  EXPECT_EQ(linesDrawn("xxx"), 1);
  EXPECT_EQ(linesDrawn(repeated("xxxxxxxxx ", 9)), 2);
  EXPECT_EQ(linesDrawn(repeated("WWWWWWWWW ", 9)), 2);
  EXPECT_EQ(linesDrawn("x\nx\nx"), 2);
}

TEST_F(ExplanationPopupViewTest, TheSourceTextIsReadAloudWhole) {
  const std::string text = repeated("WWWWWWWWW ", 9) + "\nthird line";
  show(text);
  controller.hostingView()->refresh();
  auto *const interface =
      QAccessible::queryAccessibleInterface(controller.panel()->findChild<SourceTextLabel *>());
  ASSERT_TRUE(interface);
  EXPECT_EQ(interface->text(QAccessible::Name).toStdString(),
            ExplanationPopupView::truncatedOriginalText(text).toStdString());
}

TEST_F(ExplanationPopupViewTest, TheDisabledFieldLooksDisabled) {
  show("source", "answer", true);
  controller.hostingView()->refresh();
  ASSERT_FALSE(field().isEnabled());
  const auto &palette = field().palette();
  EXPECT_LT(palette.color(QPalette::Disabled, QPalette::PlaceholderText).alphaF(),
            palette.color(QPalette::Active, QPalette::PlaceholderText).alphaF());
}

TEST_F(ExplanationPopupViewTest, ThePlaceholderCanBeReadOnEveryPalette) {
  show();
  const QPalette before = QApplication::palette();
  for (const auto &[background, text] : {std::pair(Qt::white, Qt::black), std::pair(Qt::black, Qt::white)}) {
    QPalette palette = before;
    palette.setColor(QPalette::Window, background);
    palette.setColor(QPalette::Base, background);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::PlaceholderText, background);
    QApplication::setPalette(palette);
    QCoreApplication::sendPostedEvents();
    const auto &used = field().palette();
    EXPECT_GT(std::abs(qGray(used.color(QPalette::PlaceholderText).rgb()) - qGray(QColor(background).rgb())),
              100);
    EXPECT_EQ(used.color(QPalette::Base), QColor(background));
  }
  QApplication::setPalette(before);
}

TEST_F(ExplanationPopupViewTest, ReturnInAnEmptyFieldSendsNothing) {
  show();
  update("A");
  controller.hostingView()->refresh();
  pressReturn();
  EXPECT_EQ(history().size(), 1U);
  EXPECT_FALSE(button("Send").isEnabled());
}

TEST_F(ExplanationPopupViewTest, WhileLoadingTheFieldIsDisabledAndNothingIsSent) {
  show();
  update("A", true);
  controller.hostingView()->refresh();
  EXPECT_FALSE(field().isEnabled());
  field().setText(QStringLiteral("kept"));
  EXPECT_FALSE(button("Send").isEnabled());
  Q_EMIT field().returnPressed();
  EXPECT_EQ(field().text(), QStringLiteral("kept"));
  EXPECT_EQ(history().size(), 1U);
}

TEST_F(ExplanationPopupViewTest, LoadingThatHasNotBeenDrawnYetIsEnoughToSendNothing) {
  show();
  update("A");
  controller.hostingView()->refresh();
  field().setText(QStringLiteral("kept"));
  state().setIsLoading(true);
  pressReturn();
  EXPECT_EQ(field().text(), QStringLiteral("kept"));
  EXPECT_EQ(history().size(), 1U);
}

TEST_F(ExplanationPopupViewTest, ReturnSendsTheTextUntrimmedAndEmptiesTheField) {
  show();
  update("A");
  controller.hostingView()->refresh();
  const auto exchange = http.expect();
  field().setText(QStringLiteral(" why "));
  EXPECT_TRUE(button("Send").isEnabled());
  pressReturn();
  EXPECT_EQ(field().text(), QString());
  ASSERT_EQ(history().size(), 3U);
  EXPECT_EQ(history()[1].content, " why ");
  ASSERT_EQ(seen<UserBubble>().size(), 1U);
  exchange->respond(200).end();
  EXPECT_TRUE(runUntil([&] { return !state().isLoading(); }));
}

TEST_F(ExplanationPopupViewTest, TheSendButtonSends) {
  show();
  update("A");
  controller.hostingView()->refresh();
  http.expect(200);
  field().setText(QStringLiteral("why"));
  button("Send").click();
  ASSERT_EQ(history().size(), 3U);
  EXPECT_TRUE(runUntil([&] { return !state().isLoading(); }));
}

TEST_F(ExplanationPopupViewTest, TheCopyButtonCopiesAllAnswersAndSaysSoForTwoSeconds) {
  show();
  update("A");
  button("Copy Result").click();
  EXPECT_EQ(pasted(), "A");
  EXPECT_EQ(button("Copied!").text(), QStringLiteral("Copied!"));
  advance(1999ms);
  EXPECT_NO_THROW(button("Copied!"));
  advance(1ms);
  EXPECT_NO_THROW(button("Copy Result"));
}

TEST_F(ExplanationPopupViewTest, ASecondCopyDoesNotPutOffTheFirstReset) {
  show();
  update("A");
  button("Copy Result").click();
  advance(1500ms);
  button("Copied!").click();
  EXPECT_EQ(pasteboard.puts().size(), 2U);
  advance(500ms);
  EXPECT_NO_THROW(button("Copy Result"));
}

TEST_F(ExplanationPopupViewTest, TheCloseButtonDismisses) {
  show();
  EXPECT_EQ(button("Close").toolTip(), QStringLiteral("Close (Escape)"));
  button("Close").click();
  queue.runPending();
  EXPECT_FALSE(controller.panel());
}

TEST_F(ExplanationPopupViewTest, TheFieldTakesTheKeyboardOnlyWhenItIsClicked) {
  show();
  EXPECT_EQ(windows.makeKeyCount, 0);
  const QPointF place = field().rect().center();
  QMouseEvent press(QEvent::MouseButtonPress, place, field().mapToGlobal(place), Qt::LeftButton,
                    Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&field(), &press);
  EXPECT_TRUE(controller.panel()->allowsKeyStatus());
  EXPECT_EQ(windows.keyWindow, controller.panel()->winId());
  EXPECT_FALSE(controller.panel()->windowHandle()->flags().testFlag(Qt::WindowDoesNotAcceptFocus));
}

TEST_F(ExplanationPopupViewTest, RowsThatStayAreKeptAndOnlyTheirTextChanges) {
  show();
  update("A", true);
  auto *const answer = seen<MarkdownTextView>()[0];
  update("A\n\n- one", true);
  ASSERT_EQ(seen<MarkdownTextView>().size(), 1U);
  EXPECT_EQ(seen<MarkdownTextView>()[0], answer);
  EXPECT_EQ(answer->plainText(), QString::fromUtf8("A\n\u2022 one"));
}

TEST_F(ExplanationPopupViewTest, ANewConversationReplacesTheRowsOfTheOld) {
  show();
  update("A");
  show("other");
  controller.updateContent("other", "B", false, std::nullopt);
  queue.runPending();
  ASSERT_EQ(seen<MarkdownTextView>().size(), 1U);
  EXPECT_EQ(seen<MarkdownTextView>()[0]->plainText(), QStringLiteral("B"));
}

TEST_F(ExplanationPopupViewTest, EveryControlAndEveryTurnHasAnAccessibleNameAndTheAnswerItsText) {
  show();
  update("An **answer**");
  state().addMessage("user", "Question?");
  state().setError("failure");
  controller.hostingView()->refresh();
  for (const QWidget *control :
       {static_cast<QWidget *>(&field()), static_cast<QWidget *>(&button("Send")),
        static_cast<QWidget *>(&button("Close")), static_cast<QWidget *>(controller.panel())}) {
    auto *const interface = QAccessible::queryAccessibleInterface(const_cast<QWidget *>(control));
    ASSERT_TRUE(interface);
    EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty());
  }
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&button("Copy Result"))->text(QAccessible::Name),
            QStringLiteral("Copy Result"));
  std::vector<std::string> texts;
  for (auto *const view : seen<SelectableTextView>()) {
    auto *const interface = QAccessible::queryAccessibleInterface(view);
    ASSERT_TRUE(interface && interface->textInterface());
    EXPECT_EQ(interface->role(), QAccessible::StaticText);
    texts.push_back(
        interface->text(QAccessible::Name).toStdString() + ": " +
        interface->textInterface()->text(0, interface->textInterface()->characterCount()).toStdString());
  }
  std::sort(texts.begin(), texts.end());
  EXPECT_EQ(texts, (std::vector<std::string>{"Answer: An answer", "Error: failure", "Question: Question?"}));
}

}  // namespace
}  // namespace lumiwren
