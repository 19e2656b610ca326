#include "ui/SecureField.h"

#include "ui/Keyboard.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QInputMethodQueryEvent>

#include <algorithm>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

using testing::pressKey;
using testing::typeText;

const QString key = QStringLiteral("94#7");

/// Everything that the toolkit tells assistive technology by itself, as text.
std::vector<QString> told;

void remember(QAccessibleEvent *event) {
  switch (event->type()) {
    case QAccessible::TextInserted:
      told.push_back(static_cast<QAccessibleTextInsertEvent *>(event)->textInserted());
      break;
    case QAccessible::TextRemoved:
      told.push_back(static_cast<QAccessibleTextRemoveEvent *>(event)->textRemoved());
      break;
    case QAccessible::TextUpdated: {
      const auto *const update = static_cast<QAccessibleTextUpdateEvent *>(event);
      told.push_back(update->textInserted());
      told.push_back(update->textRemoved());
      break;
    }
    case QAccessible::ValueChanged:
      told.push_back(static_cast<QAccessibleValueChangeEvent *>(event)->value().toString());
      break;
    default:
      break;
  }
}

class SecureFieldTest : public ::testing::Test {
protected:
  SecureFieldTest() {
    told.clear();
    previous_ = QAccessible::installUpdateHandler(&remember);
    QAccessible::setActive(true);
    QApplication::clipboard()->setText(QStringLiteral("untouched"));
    field_.show();
    field_.activateWindow();
    field_.setFocus();
  }
  ~SecureFieldTest() override {
    QAccessible::setActive(false);
    QAccessible::installUpdateHandler(previous_);
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
    return std::any_of(key.begin(), key.end(), [&](QChar character) { return text.contains(character); });
  }
  static bool tellsKey() { return std::any_of(told.begin(), told.end(), &SecureFieldTest::leaks); }

  SecureField field_{QStringLiteral("API")};

private:
  QAccessible::UpdateHandler previous_;
};

TEST_F(SecureFieldTest, WhileMaskedAssistiveTechnologyLearnsNothingOfTheText) {
  typeText(field_, key);
  EXPECT_EQ(field_.secret(), Secret::copyOf(key.toStdString()));
  EXPECT_FALSE(leaks(readable())) << readable().toStdString();
  EXPECT_FALSE(tellsKey());
  field_.selectAll();
  EXPECT_FALSE(leaks(readable()));
  pressKey(field_, Qt::Key_Backspace);
  field_.setSecret(Secret::copyOf(key.toStdString()));
  field_.setSecret(Secret::copyOf("94"));
  EXPECT_FALSE(tellsKey());
  EXPECT_TRUE(QAccessible::queryAccessibleInterface(&field_)->state().passwordEdit);
}

TEST_F(SecureFieldTest, WhileMaskedNothingIsCopiedOrCut) {
  field_.setSecret(Secret::copyOf(key.toStdString()));
  field_.selectAll();
  for (const int letter : {Qt::Key_C, Qt::Key_X, Qt::Key_Insert}) {
    pressKey(field_, letter, {}, Qt::ControlModifier);
  }
  pressKey(field_, Qt::Key_Delete, {}, Qt::ShiftModifier);
  field_.copy();
  field_.cut();
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("untouched"));
  EXPECT_FALSE(leaks(QApplication::clipboard()->text(QClipboard::Selection)));
  EXPECT_FALSE(field_.dragEnabled());
}

TEST_F(SecureFieldTest, WhileMaskedInputMethodsAreOffAndLearnNothing) {
  field_.setSecret(Secret::copyOf(key.toStdString()));
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
  field_.setSecret(Secret::copyOf(key.toStdString()));
  const QString masked = field_.displayText();
  EXPECT_FALSE(leaks(masked));
  EXPECT_EQ(masked.size(), key.size());
  field_.setMasked(false);
  EXPECT_EQ(field_.displayText(), key);
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
  const QString shared = key;
  {
    SecureField other(QStringLiteral("API"));
    other.setText(shared);
  }
  EXPECT_EQ(shared, key);
  EXPECT_FALSE(shared.contains(QChar(0)));
}

}  // namespace
}  // namespace lumiwren
