#include "settings/MenuBarView.h"

#include "platform/testing/FakeLoginItem.h"
#include "platform/testing/FakePanelWindows.h"
#include "platform/testing/FakeUpdater.h"
#include "platform/testing/FakeUserDefaults.h"
#include "settings/Popover.h"
#include "ui/Divider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class MenuBarViewTest : public ::testing::Test {
protected:
  void show() {
    view->prepare();
    popover->showAt({400, 10});
    QApplication::processEvents();
  }
  /// From the top, as a user sees them.
  std::vector<MenuItemButton *> entries() const {
    auto all = view->findChildren<MenuItemButton *>();
    std::sort(all.begin(), all.end(), [this](const QWidget *one, const QWidget *other) {
      return one->mapTo(view, QPoint()).y() < other->mapTo(view, QPoint()).y();
    });
    return {all.begin(), all.end()};
  }
  std::vector<std::string> labels() const {
    std::vector<std::string> result;
    for (const auto *const entry : entries()) {
      result.push_back(entry->accessibleName().toStdString());
    }
    return result;
  }
  MenuItemButton &entry(const char *label) const {
    for (auto *const candidate : entries()) {
      if (candidate->accessibleName() == QLatin1String(label)) {
        return *candidate;
      }
    }
    throw std::runtime_error(std::string("no entry ") + label);
  }
  void press(int key) const {
    auto *const focused = popover->focusWidget();
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(focused != nullptr ? focused : popover.get(), &event);
  }
  std::string highlighted() const {
    for (const auto *const each : entries()) {
      if (each->hasFocus()) {
        return each->accessibleName().toStdString();
      }
    }
    return "";
  }
  void addAction(const std::string &name) {
    actions.addAction({.id = UUID::random(),
                       .name = name,
                       .hotkey = {.keyCode = 14, .modifiers = 0xA0000},
                       .prompt = "{text}"});
  }
  void deleteAll() {
    while (!actions.actions().empty()) {
      actions.deleteAction(actions.actions().front());
    }
  }

  struct LaunchedBefore : testing::FakeUserDefaults {
    LaunchedBefore() { setBool(LaunchAtLoginManager::hasLaunchedBeforeKey, true); }
  } defaults;
  testing::FakeLoginItem loginItem;
  testing::FakeUpdater updater;
  MainQueue queue;
  LaunchAtLoginManager launchAtLogin{loginItem, defaults, queue};
  CustomActionManager actions{defaults};
  UpdateManager updates{updater};
  testing::FakePanelWindows panelWindows;
  std::vector<std::string> chosen;
  MenuBarView *const view = new MenuBarView(
      launchAtLogin, actions, updates,
      {.onAction = [this](const CustomAction &action) { chosen.push_back("run " + action.name); },
       .onQuit = [this] { chosen.emplace_back("quit"); },
       .showActions = [this] { chosen.emplace_back("actions"); },
       .showAPIKeyInput = [this] { chosen.emplace_back("key"); },
       .showAbout = [this] { chosen.emplace_back("about"); }});
  const std::unique_ptr<Popover> popover = std::make_unique<Popover>(view, QSize(220, 220), panelWindows);
};

TEST_F(MenuBarViewTest, ListsTheActionsThenSettingsAndCommandsThenQuit) {
  show();
  EXPECT_THAT(labels(), ElementsAre("Explain Selected Text", "Explain Screen Region", "Translate to English",
                                    "Manage Actions...", "Set API Key...", "Launch at Login",
                                    "Check for Updates...", "About Lumiwren", "Quit"));
  std::vector<int> dividers;
  for (const auto *const divider : view->findChildren<Divider *>()) {
    dividers.push_back(divider->mapTo(view, QPoint()).y());
  }
  std::sort(dividers.begin(), dividers.end());
  const auto top = [this](const char *label) { return entry(label).mapTo(view, QPoint()).y(); };
  ASSERT_EQ(dividers.size(), 2U);
  EXPECT_TRUE(top("Translate to English") < dividers[0] && dividers[0] < top("Manage Actions..."));
  EXPECT_TRUE(top("About Lumiwren") < dividers[1] && dividers[1] < top("Quit"));
}

TEST_F(MenuBarViewTest, AnActionSaysItsHotkeyAndRuns) {
  show();
  EXPECT_EQ(entry("Explain Selected Text").accessibleDescription(), QStringLiteral("⌥⇧E"));
  entry("Explain Selected Text").click();
  EXPECT_THAT(chosen, ElementsAre("run Explain Selected Text"));
}

TEST_F(MenuBarViewTest, EveryCommandDoesWhatItSays) {
  show();
  for (const char *label : {"Manage Actions...", "Set API Key...", "About Lumiwren", "Quit"}) {
    entry(label).click();
  }
  EXPECT_THAT(chosen, ElementsAre("actions", "key", "about", "quit"));
  entry("Check for Updates...").click();
  EXPECT_EQ(updater.checks, 1);
}

TEST_F(MenuBarViewTest, WithNoActionsOneDisabledEntrySaysSoAndTheRestIsUnchanged) {
  deleteAll();
  show();
  EXPECT_THAT(labels(), ElementsAre("No actions configured", "Manage Actions...", "Set API Key...",
                                    "Launch at Login", "Check for Updates...", "About Lumiwren", "Quit"));
  EXPECT_FALSE(entry("No actions configured").isEnabled());
  EXPECT_TRUE(entry("Manage Actions...").isEnabled());
}

TEST_F(MenuBarViewTest, TheActionsFollowTheList) {
  show();
  addAction("Another");
  QApplication::processEvents();
  EXPECT_EQ(labels().at(3), "Another");
  actions.deleteAction(actions.actions().at(0));
  QApplication::processEvents();
  EXPECT_EQ(labels().at(0), "Explain Screen Region");
}

TEST_F(MenuBarViewTest, LaunchAtLoginTogglesAndCarriesACheckMarkWhileItIsOn) {
  show();
  EXPECT_EQ(entry("Launch at Login").accessibleDescription(), QString());
  entry("Launch at Login").click();
  EXPECT_THAT(loginItem.attempts, ElementsAre("register"));
  EXPECT_EQ(entry("Launch at Login").accessibleDescription(), QStringLiteral("on"));
  entry("Launch at Login").click();
  EXPECT_EQ(entry("Launch at Login").accessibleDescription(), QString());
}

TEST_F(MenuBarViewTest, TheKeysCheckMarkIsThereAsSoonAsAKeyIsStoredAndGoneOnceItIsRemoved) {
  show();
  EXPECT_EQ(entry("Set API Key...").accessibleDescription(), QString());
  view->setHasAPIKey(true);
  EXPECT_EQ(entry("Set API Key...").accessibleDescription(), QStringLiteral("set"));
  view->setHasAPIKey(false);
  EXPECT_EQ(entry("Set API Key...").accessibleDescription(), QString());
}

TEST_F(MenuBarViewTest, WithoutAFeedThereIsNothingToCheckFor) {
  updater.canCheck = false;
  show();
  EXPECT_FALSE(entry("Check for Updates...").isEnabled());
  updater.canCheck = true;
  view->prepare();
  EXPECT_TRUE(entry("Check for Updates...").isEnabled());
}

TEST_F(MenuBarViewTest, ArrowsGoFromEntryToEntryRoundAndPastWhatIsDisabled) {
  updater.canCheck = false;
  show();
  EXPECT_EQ(highlighted(), "");
  press(Qt::Key_Down);
  EXPECT_EQ(highlighted(), "Explain Selected Text");
  press(Qt::Key_Up);
  EXPECT_EQ(highlighted(), "Quit");
  press(Qt::Key_Up);
  EXPECT_EQ(highlighted(), "About Lumiwren");
  press(Qt::Key_Up);
  EXPECT_EQ(highlighted(), "Launch at Login");
  press(Qt::Key_Return);
  EXPECT_TRUE(launchAtLogin.isEnabled());
}

TEST_F(MenuBarViewTest, EscapeClosesTheMenu) {
  show();
  press(Qt::Key_Down);
  press(Qt::Key_Escape);
  EXPECT_FALSE(popover->isShown());
}

TEST_F(MenuBarViewTest, OneEntryIsHighlightedAtATime) {
  show();
  press(Qt::Key_Down);
  auto &about = entry("About Lumiwren");
  QEnterEvent enter({1, 1}, {1, 1}, {1, 1});
  QApplication::sendEvent(&about, &enter);
  EXPECT_EQ(highlighted(), "About Lumiwren");
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&about, &leave);
  EXPECT_EQ(highlighted(), "");
  // And the keyboard goes on working.
  press(Qt::Key_Down);
  EXPECT_NE(highlighted(), "");
}

TEST_F(MenuBarViewTest, TheHighlightIsPurpleUnderWhiteTextWithRoundCorners) {
  show();
  auto &about = entry("About Lumiwren");
  about.setFocus();
  QImage picture(about.size(), QImage::Format_RGB32);
  picture.fill(Qt::white);
  about.render(&picture, {}, {}, QWidget::DrawChildren);
  const auto expected = [](double channel) {
    return static_cast<int>(std::lround(255 * (0.8 * channel + 0.2)));
  };
  const QColor ground = picture.pixelColor(6, picture.height() / 2);
  EXPECT_NEAR(ground.red(), expected(0.55), 2);
  EXPECT_NEAR(ground.green(), expected(0.35), 2);
  EXPECT_NEAR(ground.blue(), expected(0.85), 2);
  EXPECT_EQ(picture.pixelColor(0, 0), QColor(Qt::white));
  int white = 0;
  for (int x = 12; x < 60; ++x) {
    for (int y = 6; y < picture.height() - 6; ++y) {
      white += picture.pixelColor(x, y).lightness() > 240 ? 1 : 0;
    }
  }
  EXPECT_GT(white, 20);
}

TEST_F(MenuBarViewTest, AnEntryIsPaddedTwelveAndSix) {
  show();
  const auto &about = entry("About Lumiwren");
  EXPECT_EQ(about.height(), about.fontMetrics().height() + 12);
  EXPECT_EQ(about.sizeHint().width(),
            about.fontMetrics().horizontalAdvance(QStringLiteral("About Lumiwren")) + 24);
}

TEST_F(MenuBarViewTest, ThePopoverIsAtLeast220PointsSquareAndAsHighAsItsEntries) {
  deleteAll();
  show();
  EXPECT_EQ(popover->width(), 222);  // with its outline
  EXPECT_GE(popover->height(), 222);
  const auto all = entries();
  EXPECT_LE(all.back()->mapTo(popover.get(), QPoint(0, all.back()->height())).y(), popover->height());
}

TEST_F(MenuBarViewTest, TwoHundredActionsScrollWithinTheScreen) {
  for (int count = 0; count < 200; ++count) {
    addAction("Action " + std::to_string(count));
  }
  show();
  EXPECT_TRUE(QGuiApplication::primaryScreen()->availableGeometry().contains(popover->geometry()));
  const auto &quit = entry("Quit");
  EXPECT_TRUE(popover->rect().contains(quit.mapTo(popover.get(), quit.rect().bottomRight())));
  auto *const area = view->findChild<QScrollArea *>();
  EXPECT_GT(area->verticalScrollBar()->maximum(), 0);
  // The keyboard reaches the last one, and the list follows.
  for (int count = 0; count < 203; ++count) {
    press(Qt::Key_Down);
  }
  EXPECT_EQ(highlighted(), "Action 199");
  EXPECT_EQ(area->verticalScrollBar()->value(), area->verticalScrollBar()->maximum());
  // The next time it begins at the top.
  popover->performClose();
  show();
  EXPECT_EQ(area->verticalScrollBar()->value(), 0);
  EXPECT_EQ(highlighted(), "");
}

TEST_F(MenuBarViewTest, NamesAreNeverInterpretedAndNeverWidenTheMenu) {
  deleteAll();
  for (const char *name :
       {"<b>Bold</b> & more", "Copy && paste", "&File", "שלום עולם, זה שם ארוך מאוד לפעולה",
        "A name that is very much longer than the menu is wide, and goes on and on"}) {
    addAction(name);
  }
  show();
  EXPECT_EQ(labels().at(0), "<b>Bold</b> & more");
  EXPECT_EQ(labels().at(1), "Copy && paste");
  EXPECT_EQ(labels().at(2), "&File");
  EXPECT_EQ(popover->width(), 222);
  for (const auto *const each : entries()) {
    EXPECT_LE(each->width(), 220);
  }
}

TEST_F(MenuBarViewTest, EveryEntryIsAButtonWithANameForAssistiveTechnology) {
  show();
  for (auto *const each : entries()) {
    const auto *const accessible = QAccessible::queryAccessibleInterface(each);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->role(), QAccessible::Button);
    EXPECT_EQ(accessible->text(QAccessible::Name), each->accessibleName());
    EXPECT_FALSE(each->accessibleName().isEmpty());
  }
}

TEST(PopoverPlace, IsOnTheScreenBelowItsAnchorOrAboveItWhereTheTrayIsAtTheBottom) {
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  testing::FakePanelWindows panelWindows;
  Popover popover(new QWidget, {220, 220}, panelWindows);
  for (const QPoint anchor : {screen.topLeft(), screen.topRight(), screen.bottomLeft(), screen.bottomRight(),
                              screen.center(), QPoint(-5000, -5000)}) {
    popover.showAt(anchor);
    EXPECT_TRUE(screen.contains(popover.geometry()));
    popover.performClose();
  }
  popover.showAt({screen.center().x(), screen.top()});
  EXPECT_EQ(popover.geometry().top(), screen.top() + 4);
  popover.performClose();
  popover.showAt({screen.center().x(), screen.bottom()});
  EXPECT_EQ(popover.geometry().bottom() + 1, screen.bottom() - 4);
  EXPECT_NEAR(popover.geometry().center().x(), screen.center().x(), 1);
}

TEST(PopoverPlace, WhereACompositorRunsItsShadowIsAroundItAndLetsClicksThrough) {
  testing::FakePanelWindows panelWindows;
  Popover popover(new QWidget, {220, 220}, panelWindows);
  popover.showAt({400, 10});
  const QRect without = popover.geometry();
  EXPECT_EQ(panelWindows.forms.at(popover.winId()), WindowForm());

  panelWindows.setTranslucencySupported(true);
  EXPECT_EQ(popover.geometry().marginsRemoved(PanelShadow::margins), without);
  const WindowForm &form = panelWindows.forms.at(popover.winId());
  EXPECT_TRUE(form.visible.empty());
  const WindowPart inside{PanelShadow::margins.left(), PanelShadow::margins.top(), without.width(),
                          without.height()};
  EXPECT_EQ(form.clickable, std::vector{inside});
  EXPECT_EQ(form.shadow.bottom, PanelShadow::margins.bottom());

  panelWindows.setTranslucencySupported(false);
  EXPECT_EQ(popover.geometry(), without);
  EXPECT_EQ(panelWindows.forms.at(popover.winId()), WindowForm());
}

}  // namespace
}  // namespace lumiwren
