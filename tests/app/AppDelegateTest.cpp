#include "app/AppDelegate.h"

#include "app/AppTest.h"
#include "platform/KeyCodes.h"

#include <gtest/gtest.h>

#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace lumiwren {
namespace {

using std::chrono::milliseconds;

class AppDelegateTest : public testing::AppTest {
protected:
  AppDelegateTest() : AppTest([this] { return now; }) {}
  ~AppDelegateTest() override { mainQueue.close(); }

  void launch() {
    delegate.emplace(services(), [] {});
    delegate->applicationDidFinishLaunching();
  }
  void pass(milliseconds duration) {
    now += duration;
    mainQueue.runPending();
  }
  /// Presses the button of the next modal alert, and keeps what the alert says.
  void answerAlertWith(
      const QString &button, const std::function<void()> &next = [] {}) {
    QTimer::singleShot(0, &testing::testApplication(), [this, button, next] {
      next();
      auto *const alert = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
      ASSERT_NE(alert, nullptr);
      text = alert->text();
      informativeText = alert->informativeText();
      EXPECT_EQ(alert->icon(), QMessageBox::Warning);
      EXPECT_EQ(alert->textFormat(), Qt::PlainText);
      for (auto *const each : alert->buttons()) {
        if (each->text() == button) {
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
  QString text;
  QString informativeText;
};

TEST_F(AppDelegateTest, ALaunchWithTrustShowsNothingButWatchesTheKeys) {
  launch();
  pass(milliseconds(2000));
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_EQ(popup.panel(), nullptr);
  EXPECT_EQ(platform.eventMonitors().globalMonitorCount(), 1U);
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

TEST_F(AppDelegateTest, TerminatingEndsTheWatchingOfKeys) {
  launch();
  delegate->applicationWillTerminate();
  EXPECT_EQ(platform.eventMonitors().globalMonitorCount(), 0U);
  EXPECT_EQ(platform.eventMonitors().localMonitorCount(), 0U);
}

}  // namespace
}  // namespace lumiwren
