#include "app/AppDelegate.h"

#include "app/AppTest.h"
#include "platform/KeyCodes.h"
#include "ui/Alert.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusConnection>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace lumiwren {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using std::chrono::milliseconds;

class AppDelegateTest : public testing::AppTest {
protected:
  AppDelegateTest() : AppTest([this] { return now; }) {}
  ~AppDelegateTest() override { mainQueue.close(); }

  void launch() {
    delegate.emplace(services(), QDBusConnection(QStringLiteral("no bus")),
                     AppDelegate::Windows{.showActions = [this] { shown.emplace_back("actions"); },
                                          .showAPIKeyInput = [this] { shown.emplace_back("key"); },
                                          .showAbout = [this] { shown.emplace_back("about"); },
                                          .showFirstLaunchWindow = [this] { shown.emplace_back("welcome"); }},
                     [this] { ++quits; });
    delegate->applicationDidFinishLaunching();
  }
  void pass(milliseconds duration) {
    now += duration;
    mainQueue.runPending();
  }
  /// Runs the main queue until the condition holds; what it waits for happens on other threads.
  void runUntil(const std::function<bool()> &condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "nothing happened";
      mainQueue.runPending();
      std::this_thread::yield();
    }
  }
  /// Lets the keyring's answer come back, of which nothing is to be seen where there is a key.
  void settle() {
    runUntil(
        [this] { return platform.secretStore().count(testing::FakeSecretStore::Operation::Contains) > 0; });
    const auto begin = std::chrono::steady_clock::now();
    runUntil([begin] { return std::chrono::steady_clock::now() > begin + milliseconds(50); });
  }
  void openMenu() {
    delegate->togglePopover({100, 100});
    ASSERT_NE(popover(), nullptr);
  }
  Popover *popover() const {
    for (auto *const window : QApplication::topLevelWidgets()) {
      if (auto *const found = qobject_cast<Popover *>(window); found != nullptr && found->isShown()) {
        return found;
      }
    }
    return nullptr;
  }
  MenuItemButton &entry(const QString &name) const {
    for (auto *const candidate : popover()->findChildren<MenuItemButton *>()) {
      if (candidate->accessibleName() == name) {
        return *candidate;
      }
    }
    throw std::runtime_error("no entry " + name.toStdString());
  }
  void pressElsewhereAfterwards(EventKind kind) {
    platform.eventMonitors().pressElsewhere({.kind = kind, .time = platform.eventMonitors().time + 1});
  }
  /// Presses the button of the next modal alert, and keeps what the alert says.
  void answerAlertWith(
      const QString &button, const std::function<void()> &next = [] {}) {
    QTimer::singleShot(0, qApp, [this, button, next] {
      next();
      auto *const alert = qobject_cast<Alert *>(QApplication::activeModalWidget());
      ASSERT_NE(alert, nullptr);
      const auto labels = alert->findChildren<QLabel *>();
      ASSERT_GE(labels.size(), 2);
      text = labels[0]->text();
      informativeText = labels[1]->text();
      for (auto *const each : alert->findChildren<QPushButton *>()) {
        if (each->accessibleName() == button) {
          each->click();
          return;
        }
      }
      ADD_FAILURE() << "no such button: " << button.toStdString();
      alert->reject();
    });
  }

  MainQueue::TimePoint now{};
  std::optional<AppDelegate> delegate;
  std::vector<std::string> shown;
  int quits = 0;
  QString text;
  QString informativeText;
};

TEST_F(AppDelegateTest, ALaunchWithAKeyAndTrustShowsNothingButTheStatusItem) {
  launch();
  settle();
  pass(milliseconds(2000));
  EXPECT_THAT(shown, IsEmpty());
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_EQ(popup.panel(), nullptr);
  EXPECT_EQ(popover(), nullptr);
}

TEST_F(AppDelegateTest, ALaunchWatchesTheKeysAndTheMouse) {
  launch();
  EXPECT_EQ(platform.eventMonitors().globalMonitorCount(), 2U);
  EXPECT_EQ(platform.eventMonitors().localMonitorCount(), 1U);
}

TEST_F(AppDelegateTest, WithoutTrustTheAlertComesAfterOneSecond) {
  platform.accessibilityTrust().trusted = false;
  launch();
  pass(milliseconds(999));
  EXPECT_TRUE(text.isEmpty());
  answerAlertWith(QStringLiteral("Later"));
  pass(milliseconds(1));
  EXPECT_EQ(text, QStringLiteral("Accessibility Permission Required"));
  EXPECT_EQ(
      informativeText,
      QStringLiteral("Lumiwren needs accessibility permission to copy selected text. Please grant access in "
                     "System Settings > Privacy & Security > Accessibility."));
  EXPECT_EQ(platform.accessibilityTrust().prompts, 0);
}

TEST_F(AppDelegateTest, TheAlertsFirstButtonLetsTheSessionAsk) {
  platform.accessibilityTrust().trusted = false;
  launch();
  answerAlertWith(QStringLiteral("Open System Settings"));
  pass(milliseconds(1000));
  EXPECT_EQ(platform.accessibilityTrust().prompts, 1);
}

class ScreenRecordingAlert : public AppDelegateTest {
protected:
  ScreenRecordingAlert() {
    platform.screenRecording().allowed = false;
    actions.addAction({.id = UUID::random(),
                       .name = "Read",
                       .hotkey = {.keyCode = keyCode::t, .modifiers = modifier::control},
                       .prompt = "{text}",
                       .inputType = CustomAction::InputType::ScreenCapture});
  }
  void pressHotkey() {
    launch();
    platform.eventMonitors().pressKeyElsewhere(keyCode::t, modifier::control);
    while (text.isEmpty()) {
      mainQueue.runPending();
      std::this_thread::yield();
    }
  }
};

TEST_F(ScreenRecordingAlert, SaysWhatIsMissing) {
  answerAlertWith(QStringLiteral("Later"));
  pressHotkey();
  EXPECT_EQ(text, QStringLiteral("Screen Recording Permission Required"));
  EXPECT_EQ(
      informativeText,
      QStringLiteral("Lumiwren needs screen recording permission to capture screen regions for OCR. Please "
                     "grant access in System Settings > Privacy & Security > Screen Recording."));
  EXPECT_TRUE(platform.workspace().opened.empty());
  EXPECT_EQ(popup.panel(), nullptr);
}

TEST_F(ScreenRecordingAlert, TheFirstButtonOpensTheSettings) {
  answerAlertWith(QStringLiteral("Open System Settings"));
  pressHotkey();
  EXPECT_EQ(platform.workspace().opened,
            std::vector<std::string>{
                "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture"});
}

TEST_F(ScreenRecordingAlert, WithoutASettingsProgramTheUserIsToldWhatToDo) {
  platform.workspace().canOpen = false;
  answerAlertWith(QStringLiteral("Open System Settings"), [this] { answerAlertWith(QStringLiteral("OK")); });
  pressHotkey();
  EXPECT_EQ(text, QStringLiteral("No System Settings Found"));
  EXPECT_FALSE(informativeText.isEmpty());
}

TEST_F(AppDelegateTest, AnAlertThatIsDueAfterTheEndIsNotShown) {
  platform.accessibilityTrust().trusted = false;
  launch();
  delegate.reset();
  pass(milliseconds(1000));
  EXPECT_TRUE(text.isEmpty());
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(AppDelegateTest, ALaunchWithoutAKeyShowsTheWelcomeWindowAfterHalfASecond) {
  keychain.deleteAPIKey();
  launch();
  settle();
  pass(milliseconds(499));
  EXPECT_THAT(shown, IsEmpty());
  pass(milliseconds(1));
  EXPECT_THAT(shown, ElementsAre("welcome"));
}

TEST_F(AppDelegateTest, TheWelcomeWindowComesBeforeTheAlert) {
  keychain.deleteAPIKey();
  platform.accessibilityTrust().trusted = false;
  launch();
  settle();
  pass(milliseconds(500));
  EXPECT_THAT(shown, ElementsAre("welcome"));
  EXPECT_TRUE(text.isEmpty());
  answerAlertWith(QStringLiteral("Later"));
  pass(milliseconds(500));
  EXPECT_EQ(text, QStringLiteral("Accessibility Permission Required"));
}

TEST_F(AppDelegateTest, AKeyringThatDoesNotAnswerHoldsUpNothing) {
  platform.secretStore().setSilent(true);
  launch();
  openMenu();
  EXPECT_THAT(shown, IsEmpty());
  platform.secretStore().setSilent(false);
}

TEST_F(AppDelegateTest, ClickingTheIconTwiceOpensAndClosesTheMenu) {
  launch();
  delegate->togglePopover({100, 100});
  EXPECT_NE(popover(), nullptr);
  delegate->togglePopover({100, 100});
  EXPECT_EQ(popover(), nullptr);
}

TEST_F(AppDelegateTest, AClickIntoAnotherApplicationClosesTheMenu) {
  launch();
  for (const EventKind kind : {EventKind::LeftMouseDown, EventKind::RightMouseDown}) {
    openMenu();
    pressElsewhereAfterwards(kind);
    mainQueue.runPending();
    EXPECT_EQ(popover(), nullptr);
    pass(milliseconds(500));
  }
}

TEST_F(AppDelegateTest, APressThatIsToldAfterTheClickThatItBelongsToDoesNotCloseTheMenu) {
  launch();
  platform.eventMonitors().time = 0xffffffff;
  openMenu();
  platform.eventMonitors().pressElsewhere({.kind = EventKind::LeftMouseDown, .time = 0xfffffffe});
  mainQueue.runPending();
  EXPECT_NE(popover(), nullptr);
  // The clock has started again.
  platform.eventMonitors().pressElsewhere({.kind = EventKind::LeftMouseDown, .time = 5});
  mainQueue.runPending();
  EXPECT_EQ(popover(), nullptr);
}

TEST_F(AppDelegateTest, TheClickOnTheIconThatClosesTheMenuDoesNotOpenItAgain) {
  launch();
  openMenu();
  pressElsewhereAfterwards(EventKind::LeftMouseDown);
  mainQueue.runPending();
  delegate->togglePopover({100, 100});
  EXPECT_EQ(popover(), nullptr);
  delegate->togglePopover({100, 100});
  EXPECT_NE(popover(), nullptr);
}

TEST_F(AppDelegateTest, TheMenuClosesWhenSomethingElseHasTheKeyboard) {
  launch();
  openMenu();
  auto &menu = *popover();
  menu.activateWindow();
  QApplication::processEvents();
  ASSERT_TRUE(menu.isActiveWindow());
  QWidget other;
  other.show();
  other.activateWindow();
  QApplication::processEvents();
  EXPECT_EQ(popover(), nullptr);
  delegate->togglePopover({100, 100});
  EXPECT_EQ(popover(), nullptr);  // The click that gave the keyboard to the tray.
  pass(milliseconds(500));
  openMenu();
}

TEST_F(AppDelegateTest, AKeyPressElsewhereLeavesTheMenu) {
  launch();
  openMenu();
  platform.eventMonitors().pressKeyElsewhere(keyCode::t, 0);
  mainQueue.runPending();
  EXPECT_NE(popover(), nullptr);
}

TEST_F(AppDelegateTest, AnActionOfTheMenuClosesItAndRuns) {
  launch();
  platform.httpClient().expect(200);
  openMenu();
  entry(QStringLiteral("Explain Selected Text")).click();
  EXPECT_EQ(popover(), nullptr);
  runUntil([this] { return popup.panel() != nullptr; });
}

TEST_F(AppDelegateTest, AWindowOpensATenthOfASecondAfterTheMenuHasClosed) {
  launch();
  for (const auto &[name, window] :
       {std::pair("Manage Actions...", "actions"), std::pair("Set API Key...", "key"),
        std::pair("About Lumiwren", "about")}) {
    shown.clear();
    openMenu();
    entry(QLatin1String(name)).click();
    EXPECT_EQ(popover(), nullptr);
    pass(milliseconds(99));
    EXPECT_THAT(shown, IsEmpty());
    pass(milliseconds(1));
    EXPECT_THAT(shown, ElementsAre(window));
  }
}

TEST_F(AppDelegateTest, AnActionIsFoundByItsIdentifierOrElseByItsName) {
  launch();
  EXPECT_TRUE(delegate->actionNamed(QStringLiteral("Translate to English")));
  EXPECT_TRUE(
      delegate->actionNamed(QString::fromStdString(CustomAction::translateID().toString()).toLower()));
  EXPECT_FALSE(delegate->actionNamed(QStringLiteral("translate to english")));
  EXPECT_FALSE(delegate->actionNamed(QStringLiteral("00000000-0000-4000-8000-000000000000")));
  EXPECT_FALSE(delegate->actionNamed(QString()));
  // A name may look like an identifier.
  actions.addAction({.id = UUID::random(),
                     .name = "00000000-0000-4000-8000-000000000000",
                     .hotkey = {},
                     .prompt = "{text}"});
  EXPECT_TRUE(delegate->actionNamed(QStringLiteral("00000000-0000-4000-8000-000000000000")));
}

TEST_F(AppDelegateTest, ANamedActionRunsAsItsHotkeyDoes) {
  launch();
  platform.httpClient().expect(200);
  delegate->actionNamed(QStringLiteral("Explain Selected Text"))();
  runUntil([this] { return popup.panel() != nullptr; });
}

TEST_F(AppDelegateTest, TheListOfActionsSaysNothingOfTheirPrompts) {
  launch();
  const QString list = delegate->actionList();
  EXPECT_TRUE(list.startsWith(QStringLiteral("[{\"hotkey\":\"⌥⇧E\",\"id\":\"")));
  EXPECT_TRUE(list.contains(QStringLiteral("\"name\":\"Translate to English\"")));
  EXPECT_TRUE(list.contains(QStringLiteral("\"inputType\":\"Screen Capture (OCR)\"")));
  EXPECT_FALSE(list.contains(QStringLiteral("{text}")));
}

TEST_F(AppDelegateTest, QuitEndsTheProgram) {
  launch();
  openMenu();
  entry(QStringLiteral("Quit")).click();
  EXPECT_EQ(quits, 1);
}

TEST_F(AppDelegateTest, TheMenuShowsWhetherAKeyIsStored) {
  launch();
  openMenu();
  auto &key = entry(QStringLiteral("Set API Key..."));
  runUntil([&] { return key.accessibleDescription() == QStringLiteral("set"); });
  delegate->togglePopover({});
  keychain.deleteAPIKey();
  openMenu();
  runUntil([&] { return key.accessibleDescription().isEmpty(); });
}

TEST_F(AppDelegateTest, WhatIsDueAfterTheEndDoesNothing) {
  keychain.deleteAPIKey();
  launch();
  settle();
  openMenu();
  entry(QStringLiteral("About Lumiwren")).click();
  delegate.reset();
  pass(milliseconds(1000));
  EXPECT_THAT(shown, IsEmpty());
}

TEST_F(AppDelegateTest, TerminatingEndsTheWatchingOfKeys) {
  launch();
  delegate->applicationWillTerminate();
  EXPECT_EQ(platform.eventMonitors().globalMonitorCount(), 1U);  // the menu's
  EXPECT_EQ(platform.eventMonitors().localMonitorCount(), 0U);
}

}  // namespace
}  // namespace lumiwren
