#include "ui/PushButton.h"

#include "ui/BorderedButton.h"
#include "ui/Fonts.h"
#include "ui/Keyboard.h"
#include "ui/LookPalettes.h"
#include "ui/Palette.h"
#include "ui/ProgressIndicator.h"
#include "ui/Rendering.h"
#include "ui/SymbolButton.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QDialog>
#include <QImage>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

using testing::inkOf;
using testing::pressKey;
using testing::rendered;
using Kind = PushButton::Kind;

const QString saveLabel = QStringLiteral("Save");

class PushButtonTest : public ::testing::Test {
protected:
  void TearDown() override { setTextScale(1); }

  static QImage image(PushButton &button) {
    button.resize(button.sizeHint());
    return rendered(button, 1);
  }
  static QColor bodyOf(PushButton &button) { return image(button).pixelColor(button.width() / 2, 3); }
};

TEST_F(PushButtonTest, IsAControlHighAndNotNarrow) {
  PushButton shortLabel(Kind::Bordered, QStringLiteral("OK"));
  EXPECT_EQ(shortLabel.sizeHint(), QSize(64, 28));
  PushButton longLabel(Kind::Bordered, QStringLiteral("Restore Default Actions"));
  EXPECT_EQ(longLabel.sizeHint(),
            QSize(28 + longLabel.fontMetrics().horizontalAdvance(longLabel.text()), 28));
  longLabel.setSymbol(QStringLiteral("plus"));
  EXPECT_EQ(longLabel.sizeHint().width(),
            28 + 20 + longLabel.fontMetrics().horizontalAdvance(longLabel.text()));
}

TEST_F(PushButtonTest, AnAmpersandIsNeitherAMnemonicNorLost) {
  PushButton button(Kind::Bordered, QStringLiteral("&Save & Continue"));
  EXPECT_TRUE(button.shortcut().isEmpty());
  auto *const accessible = QAccessible::queryAccessibleInterface(&button);
  EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("&Save & Continue"));
  EXPECT_EQ(accessible->role(), QAccessible::Button);
  PushButton without(Kind::Bordered, QStringLiteral("Save  Continue"));
  EXPECT_GT(inkOf(image(button)).width(), inkOf(image(without)).width());
}

TEST_F(PushButtonTest, TheProminentOneIsPurpleAndDarkerWhenLitAndPressed) {
  PushButton button(Kind::Prominent, saveLabel);
  EXPECT_EQ(bodyOf(button).rgb(), lumiwrenPurple().rgb());
  EXPECT_GE(contrastRatio(bodyOf(button), Qt::white), 4.5);
  button.setAttribute(Qt::WA_UnderMouse);
  const QColor lit = bodyOf(button);
  EXPECT_GT(contrastRatio(lit, Qt::white), contrastRatio(lumiwrenPurple(), Qt::white));
  button.setDown(true);
  EXPECT_GT(contrastRatio(bodyOf(button), Qt::white), contrastRatio(lit, Qt::white));
}

TEST_F(PushButtonTest, EveryStateIsToldApart) {
  for (const Kind kind : {Kind::Bordered, Kind::Prominent, Kind::Destructive, Kind::Link}) {
    PushButton button(kind, saveLabel);
    const QImage normal = image(button);
    button.setAttribute(Qt::WA_UnderMouse);
    const QImage lit = image(button);
    EXPECT_NE(lit, normal);
    button.setDown(true);
    EXPECT_NE(image(button), lit);
    button.setDown(false);
    button.setEnabled(false);
    const QImage disabled = image(button);
    EXPECT_NE(disabled, normal);
    button.setAttribute(Qt::WA_UnderMouse, false);
    EXPECT_EQ(image(button), disabled) << "the pointer lights a disabled button";
  }
}

TEST_F(PushButtonTest, ADisabledOneIsFaint) {
  PushButton button(Kind::Prominent, saveLabel);
  button.setEnabled(false);
  EXPECT_NEAR(bodyOf(button).alphaF(), 0.4, 0.01);
}

TEST_F(PushButtonTest, TheRingOfTheFocusStandsApartFromThePurple) {
  QWidget window;
  PushButton button(Kind::Prominent, saveLabel, &window);
  button.resize(button.sizeHint());
  window.resize(100, 40);
  window.show();
  window.activateWindow();
  button.setFocus(Qt::TabFocusReason);
  QCoreApplication::processEvents();
  ASSERT_TRUE(button.hasFocus());
  button.setAttribute(Qt::WA_UnderMouse, false);
  const QImage focused = rendered(button, 1);
  const int middle = button.width() / 2;
  EXPECT_EQ(focused.pixel(middle, 0), SemanticColors(button.palette()).accent.rgb());
  EXPECT_EQ(focused.pixelColor(middle, 2).alpha(), 0);
  EXPECT_EQ(focused.pixel(middle, 4), lumiwrenPurple().rgb());
}

TEST_F(PushButtonTest, ABusyOneTurnsAWheelInThePlaceOfItsText) {
  QWidget window;
  PushButton button(Kind::Bordered, QStringLiteral("Test Connection"), &window);
  window.show();
  const QSize size = button.sizeHint();
  button.resize(size);
  const QImage idle = rendered(button, 1);
  button.setBusy(true);
  auto *const wheel = button.findChild<ProgressIndicator *>();
  EXPECT_TRUE(wheel->isVisible());
  EXPECT_EQ(button.sizeHint(), size);
  EXPECT_NEAR(QRectF(wheel->geometry()).center().x(), size.width() / 2.0, 1);
  EXPECT_NEAR(QRectF(wheel->geometry()).center().y(), size.height() / 2.0, 1);
  EXPECT_NE(rendered(button, 1), idle);
  EXPECT_EQ(button.accessibleName(), QStringLiteral("Test Connection"));
  button.setBusy(false);
  EXPECT_EQ(rendered(button, 1), idle);
  EXPECT_EQ(button.findChild<ProgressIndicator *>(), nullptr);
}

TEST_F(PushButtonTest, SpacePressesItAndReturnDoesWhereItIsTheDefault) {
  QDialog dialog;
  auto *const layout = new QVBoxLayout(&dialog);
  auto *const cancel = new PushButton(Kind::Bordered, QStringLiteral("Cancel"));
  auto *const save = new PushButton(Kind::Prominent, saveLabel);
  layout->addWidget(
      new SymbolButton(QStringLiteral("plus"), 14, QStringLiteral("Add"), &SemanticColors::primary));
  layout->addWidget(new BorderedButton);
  layout->addWidget(cancel);
  layout->addWidget(save);
  save->setDefault(true);
  int cancels = 0;
  int saves = 0;
  QObject::connect(cancel, &QPushButton::clicked, [&] { ++cancels; });
  QObject::connect(save, &QPushButton::clicked, [&] { ++saves; });
  dialog.show();
  cancel->setFocus();
  pressKey(*cancel, Qt::Key_Space);
  EXPECT_EQ(std::pair(cancels, saves), std::pair(1, 0));
  pressKey(*cancel, Qt::Key_Return);
  EXPECT_EQ(std::pair(cancels, saves), std::pair(1, 1));
}

TEST_F(PushButtonTest, IsReachedByTabAndNotByAClick) {
  EXPECT_EQ(PushButton(Kind::Link, saveLabel).focusPolicy(), Qt::TabFocus);
}

TEST_F(PushButtonTest, GrowsWithTheText) {
  PushButton button(Kind::Bordered, saveLabel);
  setTextScale(1.5);
  EXPECT_EQ(button.font().pixelSize(), 20);
  EXPECT_EQ(button.sizeHint().height(), 42);
}

TEST_F(PushButtonTest, FollowsThePalette) {
  PushButton button(Kind::Destructive, saveLabel);
  button.setPalette(lightPalette());
  const QImage light = image(button);
  button.setPalette(darkPalette());
  EXPECT_NE(image(button), light);
}

}  // namespace
}  // namespace lumiwren
