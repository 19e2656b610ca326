#include "settings/AboutView.h"
#include "settings/AboutWindowController.h"

#include "platform/testing/FakeApplicationWindows.h"
#include "platform/testing/FakeBundle.h"
#include "ui/AppIconView.h"
#include "ui/Keyboard.h"
#include "ui/PushButton.h"
#include "ui/TextLabel.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QScreen>

namespace lumiwren {
namespace {

using testing::pressKey;

class AboutTest : public ::testing::Test {
protected:
  static TextLabel *label(const QWidget &window, const QString &text) {
    for (auto *const each : window.findChildren<TextLabel *>()) {
      if (each->text() == text) {
        return each;
      }
    }
    return nullptr;
  }
  FormWindow &show() {
    controller.showWindow();
    return *controller.window();
  }

  testing::FakeApplicationWindows windows;
  testing::FakeBundle bundle;
  AboutWindowController controller{windows, bundle};
};

TEST_F(AboutTest, TheVersionIsTheBundlesShortVersion) {
  bundle.strings["CFBundleShortVersionString"] = "1.4";
  EXPECT_EQ(AboutView::appVersion(bundle), QStringLiteral("Version 1.4"));
  EXPECT_NE(label(show(), QStringLiteral("Version 1.4")), nullptr);
}

TEST_F(AboutTest, WithoutAShortVersionItIsUnknown) {
  bundle.strings["CFBundleVersion"] = "1.4";
  EXPECT_EQ(AboutView::appVersion(bundle), QStringLiteral("Version Unknown"));
}

TEST_F(AboutTest, ShownTwiceThereIsOneWindowAndItComesForward) {
  FormWindow &window = show();
  EXPECT_TRUE(window.isVisible());
  const QPoint place = window.pos();
  EXPECT_EQ(&show(), &window);
  EXPECT_EQ(window.pos(), place);
  EXPECT_EQ(windows.activated, (std::vector<NativeWindow>{window.winId(), window.winId()}));
}

TEST_F(AboutTest, ReopenedItIsTheSameWindowAtThePlaceWhereItWasLeft) {
  FormWindow &window = show();
  window.move(37, 41);
  window.close();
  EXPECT_FALSE(window.isVisible());
  EXPECT_EQ(&show(), &window);
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(window.pos(), QPoint(37, 41));
  EXPECT_EQ(windows.activated.size(), 2U);
}

TEST_F(AboutTest, FirstShownItIsInTheMiddleOfTheScreen) {
  const FormWindow &window = show();
  const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
  EXPECT_NEAR((window.pos() + window.rect().center()).x(), middle.x(), 1);
  EXPECT_NEAR((window.pos() + window.rect().center()).y(), middle.y(), 1);
}

TEST_F(AboutTest, CloseReturnAndEscapeHideIt) {
  FormWindow &window = show();
  window.findChild<PushButton *>()->click();
  EXPECT_FALSE(window.isVisible());
  for (const int key : {Qt::Key_Return, Qt::Key_Escape}) {
    EXPECT_EQ(&show(), &window);
    ASSERT_TRUE(window.isVisible());
    pressKey(window, key);
    EXPECT_FALSE(window.isVisible());
  }
}

TEST_F(AboutTest, ItsButtonIsHarmlessAfterTheController) {
  bool closed = false;
  AboutView view(bundle, [&closed] { closed = true; });
  view.findChild<PushButton *>()->click();
  EXPECT_TRUE(closed);
}

TEST_F(AboutTest, HasATitleAndACloseButtonAndOneSize) {
  const FormWindow &window = show();
  EXPECT_EQ(window.windowTitle(), QStringLiteral("About Lumiwren"));
  const auto flags = window.windowFlags();
  EXPECT_TRUE(flags.testFlag(Qt::WindowTitleHint));
  EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint));
  EXPECT_FALSE(flags.testFlag(Qt::WindowMinimizeButtonHint));
  EXPECT_FALSE(flags.testFlag(Qt::WindowMaximizeButtonHint));
  EXPECT_EQ(window.minimumSize(), window.maximumSize());
}

TEST_F(AboutTest, IsLaidOutAsStated) {
  const FormWindow &window = show();
  EXPECT_EQ(window.width(), 340);
  EXPECT_GE(window.height(), 300);
  const auto place = [&](QWidget *widget) { return QRect(widget->mapTo(&window, QPoint()), widget->size()); };
  const QRect icon = place(window.findChild<AppIconView *>());
  EXPECT_EQ(icon, QRect((340 - 128) / 2, 24, 128, 128));
  TextLabel *const name = label(window, QStringLiteral("Lumiwren"));
  EXPECT_EQ(name->font().pixelSize(), 17);
  EXPECT_EQ(name->font().weight(), QFont::DemiBold);
  EXPECT_EQ(place(name).top() - icon.bottom() - 1, 16);
  TextLabel *const version = label(window, QStringLiteral("Version Unknown"));
  EXPECT_EQ(version->font().pixelSize(), 11);
  TextLabel *const description =
      label(window, QStringLiteral("A lightweight macOS menu bar app that explains selected text or screen "
                                   "regions using AI. Supports custom actions with configurable hotkeys and "
                                   "prompts."));
  ASSERT_NE(description, nullptr);
  EXPECT_EQ(description->font().pixelSize(), 13);
  EXPECT_GE(description->height(), description->heightForWidth(description->width()));
  EXPECT_GT(description->height(), 3 * description->fontMetrics().height() - 1);
  const QRect close = place(window.findChild<PushButton *>());
  EXPECT_EQ(close.bottom(), window.height() - 24 - 1);
  EXPECT_EQ(close.top() - place(description).bottom() - 1, 16 + 1 + 16);
}

}  // namespace
}  // namespace lumiwren
