#include "app/AppearanceController.h"

#include "platform/testing/FakeDesktopAppearance.h"
#include "ui/Fonts.h"
#include "ui/LookPalettes.h"
#include "ui/Motion.h"
#include "ui/Palette.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QEvent>
#include <QMenu>
#include <QToolTip>

#include <functional>
#include <optional>

namespace lumiwren {
namespace {

using testing::FakeDesktopAppearance;

bool looksDark(const QPalette &palette) {
  return SemanticColors(palette).isDark;
}

class Window : public QWidget {
public:
  int paletteChanges = 0;
  int fontChanges = 0;

protected:
  void changeEvent(QEvent *event) override {
    paletteChanges += event->type() == QEvent::PaletteChange ? 1 : 0;
    fontChanges += event->type() == QEvent::FontChange ? 1 : 0;
    QWidget::changeEvent(event);
  }
};

/// A program with open windows, on a toolkit that is light by itself.
class AppearanceControllerTest : public ::testing::Test {
protected:
  AppearanceControllerTest() {
    toolkit_ = QApplication::palette();
    font_ = QApplication::font();
    window_.emplace();
    window_->show();
    deliver();
  }
  void TearDown() override {
    desktop_.set({});
    deliver();
    controller_.reset();
  }

  /// The toolkit tells its windows from the event loop.
  static void deliver() { QCoreApplication::processEvents(); }

  void start() { controller_.emplace(desktop_); }
  void change(const Appearance &appearance) {
    desktop_.set(appearance);
    deliver();
  }
  void prefer(ColorScheme scheme) { change({.colorScheme = scheme}); }

  FakeDesktopAppearance desktop_;
  QPalette toolkit_;
  QFont font_;
  std::optional<Window> window_;
  std::optional<AppearanceController> controller_;
};

TEST_F(AppearanceControllerTest, WithoutAPreferenceEverythingStaysTheToolkits) {
  start();
  deliver();
  EXPECT_EQ(QApplication::palette(), toolkit_);
  EXPECT_EQ(QApplication::font(), font_);
  EXPECT_EQ(textScale(), 1);
  EXPECT_FALSE(reducesMotion());
  EXPECT_EQ(window_->paletteChanges, 0);
  EXPECT_EQ(window_->fontChanges, 0);
}

TEST_F(AppearanceControllerTest, WhatThePlatformSaidBeforeIsAppliedAtOnce) {
  desktop_.set({.colorScheme = ColorScheme::Dark, .reducesMotion = true, .textScale = 1.5});
  start();
  EXPECT_TRUE(looksDark(QApplication::palette()));
  EXPECT_TRUE(reducesMotion());
  EXPECT_EQ(textScale(), 1.5);
}

TEST_F(AppearanceControllerTest, ADarkPreferenceDarkensOpenWindowsMenusAndToolTips) {
  ASSERT_FALSE(looksDark(toolkit_));
  QMenu menu;
  menu.addAction(QStringLiteral("Quit"));
  start();
  prefer(ColorScheme::Dark);
  EXPECT_EQ(window_->palette().color(QPalette::Window), darkPalette().color(QPalette::Window));
  EXPECT_EQ(menu.palette().color(QPalette::Window), darkPalette().color(QPalette::Window));
  EXPECT_EQ(QToolTip::palette().color(QPalette::ToolTipBase), darkPalette().color(QPalette::ToolTipBase));
  EXPECT_EQ(QMenu().palette().color(QPalette::WindowText), darkPalette().color(QPalette::WindowText));
  EXPECT_EQ(window_->paletteChanges, 1);
}

TEST_F(AppearanceControllerTest, TheToolkitsPaletteComesBack) {
  start();
  for (const ColorScheme scheme : {ColorScheme::Light, ColorScheme::NoPreference}) {
    prefer(ColorScheme::Dark);
    EXPECT_TRUE(looksDark(window_->palette()));
    prefer(scheme);
    EXPECT_EQ(QApplication::palette(), toolkit_);
    EXPECT_EQ(window_->palette().color(QPalette::Window), toolkit_.color(QPalette::Window));
  }
}

TEST_F(AppearanceControllerTest, WhereTheToolkitAgreesItsPaletteStays) {
  start();
  prefer(ColorScheme::Light);
  EXPECT_EQ(QApplication::palette(), toolkit_);
  EXPECT_EQ(window_->paletteChanges, 0);
}

TEST_F(AppearanceControllerTest, ALightPreferenceOnADarkToolkitIsFollowed) {
  // Stands for a toolkit whose theme changes while the program runs.
  start();
  prefer(ColorScheme::Light);
  QApplication::setPalette(darkPalette());
  deliver();
  EXPECT_EQ(QApplication::palette().color(QPalette::Window), lightPalette().color(QPalette::Window));
  deliver();
  EXPECT_EQ(window_->palette().color(QPalette::Window), lightPalette().color(QPalette::Window));
}

TEST_F(AppearanceControllerTest, WhatIsNotAboutColoursLeavesThePaletteAlone) {
  start();
  prefer(ColorScheme::Dark);
  const int before = window_->paletteChanges;
  change({.colorScheme = ColorScheme::Dark, .reducesMotion = true});
  EXPECT_EQ(window_->paletteChanges, before);
  EXPECT_TRUE(reducesMotion());
}

TEST_F(AppearanceControllerTest, TheTextScaleReachesOurFontsAndTheToolkits) {
  start();
  change({.textScale = 1.5});
  EXPECT_EQ(systemFont(13).pixelSize(), 20);
  EXPECT_DOUBLE_EQ(QApplication::font().pointSizeF(), font_.pointSizeF() * 1.5);
  EXPECT_DOUBLE_EQ(QMenu().font().pointSizeF(), font_.pointSizeF() * 1.5);
  EXPECT_GE(window_->fontChanges, 1);
  change({});
  EXPECT_EQ(systemFont(13).pixelSize(), 13);
  EXPECT_DOUBLE_EQ(QApplication::font().pointSizeF(), font_.pointSizeF());
}

TEST_F(AppearanceControllerTest, MotionFollows) {
  start();
  change({.reducesMotion = true});
  EXPECT_TRUE(reducesMotion());
  change({});
  EXPECT_FALSE(reducesMotion());
}

TEST_F(AppearanceControllerTest, AfterItsEndNothingFollows) {
  start();
  controller_.reset();
  prefer(ColorScheme::Dark);
  EXPECT_EQ(QApplication::palette(), toolkit_);
}

}  // namespace
}  // namespace lumiwren
