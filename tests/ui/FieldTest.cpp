#include "ui/Fonts.h"
#include "ui/Keyboard.h"
#include "ui/LookPalettes.h"
#include "ui/Palette.h"
#include "ui/Rendering.h"
#include "ui/TextArea.h"
#include "ui/TextField.h"
#include "ui/ThinScrollBar.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QImage>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QStyle>
#include <QStyleFactory>

namespace lumiwren {
namespace {

using testing::pressKey;
using testing::rendered;

const QString fieldName = QStringLiteral("Name");

/// Counts the Returns that reach the window.
class Window : public QWidget {
public:
  int returns = 0;

protected:
  void keyPressEvent(QKeyEvent *event) override { returns += event->key() == Qt::Key_Return ? 1 : 0; }
};

class FieldTest : public ::testing::Test {
protected:
  void TearDown() override { setTextScale(1); }

  void show(QWidget &field, const QSize &size) {
    field.setParent(&window_);
    field.resize(size);
    window_.resize(size.grownBy(QMargins(10, 10, 10, 10)));
    window_.show();
    window_.activateWindow();
    QCoreApplication::processEvents();
    window_.setFocus();
  }
  static void expectPanel(QWidget &field) {
    const SemanticColors colors(field.palette());
    const QImage image = rendered(field, 1);
    const int middle = image.width() / 2;
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << "the corner is not round";
    EXPECT_EQ(image.pixelColor(middle, image.height() - 4), colors.textBackground);
    EXPECT_NE(image.pixelColor(middle, 0), colors.textBackground) << "no outline";
    EXPECT_EQ(image.pixelColor(middle, 1), colors.textBackground) << "more than a hairline";
    field.setFocus();
    ASSERT_TRUE(field.hasFocus());
    const QImage focused = rendered(field, 1);
    for (const int y : {0, 1, image.height() - 1}) {
      EXPECT_EQ(focused.pixel(middle, y), colors.accent.rgb()) << "row " << y;
    }
    EXPECT_EQ(focused.pixelColor(middle, 2), colors.textBackground);
  }

  Window window_;
};

TEST_F(FieldTest, ATextFieldIsAControlHighWithAHairlineOrTheRingOfTheFocus) {
  TextField field(fieldName);
  EXPECT_EQ(field.sizeHint().height(), 28);
  EXPECT_EQ(field.font().pixelSize(), 13);
  for (const auto &palette : {lightPalette(), darkPalette()}) {
    window_.setPalette(palette);
    show(field, {160, 28});
    expectPanel(field);
  }
  field.setParent(nullptr);
}

TEST_F(FieldTest, ATextAreaHasTheSameLook) {
  TextArea area(fieldName);
  for (const auto &palette : {lightPalette(), darkPalette()}) {
    window_.setPalette(palette);
    show(area, {160, 80});
    expectPanel(area);
  }
  area.setParent(nullptr);
}

TEST_F(FieldTest, ADesktopsStyleChangesNothing) {
  TextField field(fieldName);
  show(field, {160, 28});
  const QImage before = rendered(field, 1);
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("windows")));
  EXPECT_EQ(rendered(field, 1), before);
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("fusion")));
  field.setParent(nullptr);
}

TEST_F(FieldTest, ThePlaceholderIsReadableAlsoWhenThePaletteChanges) {
  TextField field(fieldName);
  TextArea area(fieldName);
  for (QWidget *const widget : {static_cast<QWidget *>(&field), static_cast<QWidget *>(&area)}) {
    widget->setParent(&window_);
    for (const auto &palette : {lightPalette(), darkPalette(), lightPalette()}) {
      window_.setPalette(palette);
      const SemanticColors colors(palette);
      EXPECT_EQ(widget->palette().color(QPalette::PlaceholderText), colors.secondary);
      EXPECT_EQ(widget->palette().color(QPalette::Base), colors.textBackground);
      EXPECT_EQ(widget->palette().color(QPalette::Text), palette.color(QPalette::Text));
      EXPECT_EQ(widget->palette().color(QPalette::Disabled, QPalette::Base), colors.textBackground);
    }
    widget->setParent(nullptr);
  }
}

TEST_F(FieldTest, NamesAndRolesAreKnownToAssistiveTechnology) {
  TextField field(fieldName);
  TextArea area(fieldName);
  for (QWidget *const widget : {static_cast<QWidget *>(&field), static_cast<QWidget *>(&area)}) {
    auto *const accessible = QAccessible::queryAccessibleInterface(widget);
    EXPECT_EQ(accessible->text(QAccessible::Name), fieldName);
    EXPECT_EQ(accessible->role(), QAccessible::EditableText);
  }
}

TEST_F(FieldTest, ReturnReachesTheWindowButForOneThatEndsComposing) {
  TextField field(fieldName, TextField::Face::System, &window_);
  QInputMethodEvent composing(QStringLiteral("ni"), {});
  QCoreApplication::sendEvent(&field, &composing);
  pressKey(field, Qt::Key_Return);
  EXPECT_EQ(window_.returns, 0);
  QInputMethodEvent commit;
  commit.setCommitString(QStringLiteral("\u4f60"));
  QCoreApplication::sendEvent(&field, &commit);
  pressKey(field, Qt::Key_Return);
  EXPECT_EQ(window_.returns, 1);
}

TEST_F(FieldTest, HotkeysTypeNothingOverWhatIsSelected) {
  TextField field(fieldName);
  TextArea area(fieldName);
  field.setText(QStringLiteral("Text"));
  area.setPlainText(QStringLiteral("Text"));
  field.selectAll();
  area.selectAll();
  for (const auto modifier : {Qt::AltModifier, Qt::MetaModifier}) {
    for (QWidget *const widget : {static_cast<QWidget *>(&field), static_cast<QWidget *>(&area)}) {
      QKeyEvent press(QEvent::KeyPress, Qt::Key_E, modifier | Qt::ShiftModifier, QStringLiteral("E"));
      QApplication::sendEvent(widget, &press);
      EXPECT_FALSE(press.isAccepted());
    }
  }
  EXPECT_EQ(field.text(), QStringLiteral("Text"));
  EXPECT_EQ(area.toPlainText(), QStringLiteral("Text"));
  // The key that types the characters of the third level is neither.
  QKeyEvent press(QEvent::KeyPress, Qt::Key_E, Qt::GroupSwitchModifier, QStringLiteral("€"));
  QApplication::sendEvent(&field, &press);
  EXPECT_EQ(field.text(), QStringLiteral("€"));
}

TEST_F(FieldTest, ATextAreaTakesPlainTextOnlyAndIsLeftByTab) {
  TextArea area(fieldName);
  auto *const rich = new QMimeData;
  rich->setHtml(QStringLiteral("<b>bold</b>"));
  rich->setText(QStringLiteral("<b>plain</b>"));
  QApplication::clipboard()->setMimeData(rich);
  area.paste();
  EXPECT_EQ(area.toPlainText(), QStringLiteral("<b>plain</b>"));
  EXPECT_TRUE(area.tabChangesFocus());
}

TEST_F(FieldTest, ATextAreaScrollsWithTheThinBar) {
  TextArea area(fieldName);
  EXPECT_NE(qobject_cast<ThinScrollBar *>(area.verticalScrollBar()), nullptr);
}

TEST_F(FieldTest, FieldsGrowWithTheText) {
  TextField field(fieldName);
  TextField fixed(fieldName, TextField::Face::Monospaced);
  TextArea area(fieldName);
  EXPECT_TRUE(QFontInfo(fixed.font()).fixedPitch());
  setTextScale(2);
  EXPECT_EQ(field.sizeHint().height(), 56);
  EXPECT_EQ(field.font().pixelSize(), 26);
  EXPECT_EQ(fixed.font().pixelSize(), 26);
  EXPECT_TRUE(QFontInfo(fixed.font()).fixedPitch());
  EXPECT_EQ(area.font().pixelSize(), 26);
}

}  // namespace
}  // namespace lumiwren
