#include "input/HotkeyManager.h"
#include "platform/linux/session/LocalEventMonitors.h"
#include "platform/testing/FakeUserDefaults.h"
#include "platform/x11/keys/InputDriver.h"
#include "settings/ActionEditorView.h"
#include "support/ToolkitTest.h"
#include "ui/BoxedLabel.h"
#include "ui/MainQueueLoop.h"
#include "ui/TextField.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QPushButton>
#include <QWindow>

#include <linux/input-event-codes.h>

#include <algorithm>
#include <functional>
#include <string>

namespace lumiwren::testing {
namespace {

/// This program's own windows are all that is watched.
class OwnEventMonitors : public EventMonitors {
public:
  Handle addGlobalMonitor(std::uint32_t /*mask*/, GlobalHandler /*handler*/) override { return {}; }
  Handle addLocalMonitor(std::uint32_t mask, LocalHandler handler) override {
    return local_.addLocalMonitor(mask, std::move(handler));
  }
  std::uint32_t currentTime() override { return 0; }

private:
  LocalEventMonitors local_;
};

/// The editor on a real X server, before a keyboard that the test presses.
class HotkeyRecordingTest : public ToolkitTest {
protected:
  void SetUp() override {
    hotkeys_.onActionHotkeyPressed = [this](const UUID & /*id*/) { ++runs_; };
    hotkeys_.startMonitoring();
    editor_.show();
    waitUntil([this] { return editor_.windowHandle()->isExposed(); });
    user_.setFocus(static_cast<xcb_window_t>(editor_.winId()));
    waitUntil([this] { return editor_.isActiveWindow(); });
    editor_.setFocus();
  }

  static void waitUntil(const std::function<bool()> &condition) {
    const QDeadlineTimer deadline(patience);
    while (!condition()) {
      ASSERT_FALSE(deadline.hasExpired());
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
  }
  /// Types a letter into the field for the name and waits until it is there, and everything before it.
  void typeMark() {
    const auto marks = [this] { return std::ranges::count(typed(), 'z'); };
    const auto before = marks();
    user_.tap(KEY_Z);
    waitUntil([&] { return marks() > before; });
  }
  void change() {
    for (auto *const button : editor_.findChildren<QPushButton *>()) {
      if (button->text() == QStringLiteral("Change")) {
        button->click();
      }
    }
  }
  std::string typed() const { return editor_.findChild<TextField *>()->text().toStdString(); }
  std::string shown() const { return editor_.findChild<BoxedLabel *>()->text().toStdString(); }

  InputDriver user_;
  MainQueue queue_;
  const MainQueueLoop loop_{queue_};
  OwnEventMonitors monitors_;
  FakeUserDefaults defaults_;
  const CustomActionManager actions_{defaults_};
  HotkeyManager hotkeys_{monitors_, actions_, queue_};
  int runs_ = 0;
  ActionEditorView editor_{std::nullopt, monitors_, queue_, {}};
};

TEST_F(HotkeyRecordingTest, ACombinationIsRecordedAndTypesNothing) {
  change();
  user_.tapTogether({KEY_LEFTSHIFT, KEY_LEFTALT, KEY_K});
  typeMark();
  EXPECT_EQ(shown(), "⌥⇧K");
  EXPECT_EQ(typed(), "z");
  user_.tapTogether({KEY_LEFTALT, KEY_F5});
  user_.tapTogether({KEY_LEFTSHIFT, KEY_LEFTCTRL});
  typeMark();
  EXPECT_EQ(shown(), "⌥?");
}

TEST_F(HotkeyRecordingTest, TheHotkeyOfAnActionIsRecordedAndDoesNotRunIt) {
  user_.tapTogether({KEY_LEFTSHIFT, KEY_LEFTALT, KEY_E});
  typeMark();
  EXPECT_EQ(runs_, 1);
  change();
  user_.tapTogether({KEY_LEFTSHIFT, KEY_LEFTALT, KEY_E});
  typeMark();
  EXPECT_EQ(shown(), "⌥⇧E");
  EXPECT_EQ(runs_, 1);
}

TEST_F(HotkeyRecordingTest, PlainKeysReachTheFieldAndEscapeEndsTheRecording) {
  change();
  user_.tap(KEY_A);
  user_.tap(KEY_CAPSLOCK);
  user_.tap(KEY_A);
  user_.tap(KEY_CAPSLOCK);
  typeMark();
  EXPECT_EQ(typed(), "aAz");
  EXPECT_EQ(shown(), "Press keys...");
  user_.tap(KEY_ESC);
  waitUntil([this] { return shown() == "⌥⇧1"; });
}

TEST_F(HotkeyRecordingTest, ShortcutsOfFieldsAreRecordedToo) {
  typeMark();
  change();
  user_.tapTogether({KEY_LEFTCTRL, KEY_A});
  user_.tapTogether({KEY_LEFTCTRL, KEY_BACKSPACE});
  typeMark();
  EXPECT_EQ(shown(), "⌃⌫");
  EXPECT_EQ(typed(), "zz");
}

}  // namespace
}  // namespace lumiwren::testing
