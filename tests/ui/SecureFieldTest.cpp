#include "ui/SecureField.h"

#include "ui/Keyboard.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QInputMethodQueryEvent>

#include <algorithm>
#include <string>
#include <utility>

namespace lumiwren {
namespace {

using testing::pressKey;
using testing::typeText;

const QString secretKey = QStringLiteral("94#7");

class SecureFieldTest : public ::testing::Test {
protected:
  SecureFieldTest() {
    QApplication::clipboard()->setText(QStringLiteral("untouched"));
    field_.show();
    field_.activateWindow();
    field_.setFocus();
  }

  /// What assistive technology can read of the field's text when it asks.
  QString readable() {
    auto *const accessible = QAccessible::queryAccessibleInterface(&field_);
    auto *const text = accessible->textInterface();
    int start = 0;
    int end = 0;
    QStringList all{accessible->text(QAccessible::Value), accessible->text(QAccessible::Name),
                    accessible->text(QAccessible::Description), accessible->text(QAccessible::Help)};
    if (text != nullptr) {
      all << text->text(0, 100) << text->text(0, text->characterCount())
          << text->textAtOffset(0, QAccessible::LineBoundary, &start, &end)
          << text->textAtOffset(1, QAccessible::CharBoundary, &start, &end)
          << text->textBeforeOffset(3, QAccessible::CharBoundary, &start, &end)
          << text->textAfterOffset(0, QAccessible::CharBoundary, &start, &end);
    }
    return all.join(QLatin1Char('|'));
  }
  static bool leaks(const QString &text) {
    return std::any_of(secretKey.begin(), secretKey.end(),
                       [&](QChar character) { return text.contains(character); });
  }

  SecureField field_{QStringLiteral("API")};
};

TEST_F(SecureFieldTest, WhileMaskedAssistiveTechnologyLearnsNothingOfTheText) {
  typeText(field_, secretKey);
  EXPECT_EQ(field_.secret(), Secret::copyOf(secretKey.toStdString()));
  EXPECT_FALSE(leaks(readable())) << readable().toStdString();
  field_.selectAll();
  EXPECT_FALSE(leaks(readable()));
  auto *const accessible = QAccessible::queryAccessibleInterface(&field_);
  EXPECT_EQ(accessible->role(), QAccessible::EditableText);
  EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("API"));
  EXPECT_TRUE(accessible->state().passwordEdit);
  // The toolkit announces each change of a text, with the text, of whatever has one.
  EXPECT_EQ(accessible->textInterface(), nullptr);
  EXPECT_EQ(accessible->editableTextInterface(), nullptr);
  EXPECT_EQ(accessible->valueInterface(), nullptr);
}

TEST_F(SecureFieldTest, ShownInTheClearAssistiveTechnologyReadsAndSelectsIt) {
  field_.setSecret(Secret::copyOf(secretKey.toStdString()));
  field_.setMasked(false);
  auto *const accessible = QAccessible::queryAccessibleInterface(&field_);
  EXPECT_FALSE(accessible->state().passwordEdit);
  auto *const text = accessible->textInterface();
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(text->text(1, 3), secretKey.mid(1, 2));
  EXPECT_EQ(text->characterCount(), secretKey.size());
  EXPECT_EQ(text->selectionCount(), 0);
  text->addSelection(1, 3);
  EXPECT_EQ(field_.selectedText(), secretKey.mid(1, 2));
  int start = 0;
  int end = 0;
  text->selection(0, &start, &end);
  EXPECT_EQ(std::pair(start, end), std::pair(1, 3));
  text->removeSelection(0);
  EXPECT_FALSE(field_.hasSelectedText());
  text->setCursorPosition(2);
  EXPECT_EQ(text->cursorPosition(), 2);
}

TEST_F(SecureFieldTest, WhileMaskedNothingIsCopiedOrCut) {
  field_.setSecret(Secret::copyOf(secretKey.toStdString()));
  field_.selectAll();
  for (const int letter : {Qt::Key_C, Qt::Key_X, Qt::Key_Insert}) {
    pressKey(field_, letter, {}, Qt::ControlModifier);
  }
  pressKey(field_, Qt::Key_Delete, {}, Qt::ShiftModifier);
  EXPECT_EQ(field_.secret(), Secret::copyOf(secretKey.toStdString()));
  field_.copy();
  field_.cut();
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("untouched"));
  EXPECT_FALSE(leaks(QApplication::clipboard()->text(QClipboard::Selection)));
  EXPECT_FALSE(field_.dragEnabled());
}

TEST_F(SecureFieldTest, WhileMaskedInputMethodsAreOffAndLearnNothing) {
  field_.setSecret(Secret::copyOf(secretKey.toStdString()));
  field_.selectAll();
  const auto learnt = [&] {
    QStringList texts;
    for (const auto query :
         {Qt::ImSurroundingText, Qt::ImCurrentSelection, Qt::ImTextBeforeCursor, Qt::ImTextAfterCursor}) {
      QInputMethodQueryEvent event(query);
      QCoreApplication::sendEvent(&field_, &event);
      texts << event.value(query).toString();
    }
    return texts.join(QLatin1Char('|'));
  };
  EXPECT_FALSE(leaks(learnt()));
  EXPECT_FALSE(field_.testAttribute(Qt::WA_InputMethodEnabled));
  field_.setMasked(false);
  EXPECT_TRUE(field_.testAttribute(Qt::WA_InputMethodEnabled));
  EXPECT_TRUE(leaks(learnt()));
}

TEST_F(SecureFieldTest, ShownInTheClearItIsAFieldLikeAnyOther) {
  field_.setSecret(Secret::copyOf(secretKey.toStdString()));
  const QString masked = field_.displayText();
  EXPECT_FALSE(leaks(masked));
  EXPECT_EQ(masked.size(), secretKey.size());
  field_.setMasked(false);
  EXPECT_EQ(field_.displayText(), secretKey);
  EXPECT_FALSE(QAccessible::queryAccessibleInterface(&field_)->state().passwordEdit);
  EXPECT_TRUE(leaks(readable()));
  field_.setMasked(true);
  EXPECT_EQ(field_.displayText(), masked);
  EXPECT_FALSE(leaks(readable()));
}

TEST_F(SecureFieldTest, TheSecretIsExactlyWhatWasTyped) {
  const std::string text = "  \xe2\x82\xac sk ";
  field_.setSecret(Secret::copyOf(text));
  EXPECT_EQ(field_.secret(), Secret::copyOf(text));
  field_.setSecret({});
  EXPECT_EQ(field_.secret(), Secret());
  EXPECT_TRUE(field_.text().isEmpty());
}

TEST_F(SecureFieldTest, SharedTextOutlivesTheField) {
  const QString shared = secretKey;
  {
    SecureField other(QStringLiteral("API"));
    other.setText(shared);
  }
  EXPECT_EQ(shared, secretKey);
  EXPECT_FALSE(shared.contains(QChar(0)));
}

}  // namespace
}  // namespace lumiwren
