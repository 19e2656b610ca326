#include "platform/linux/session/LocalEventMonitors.h"

#include "platform/KeyCodes.h"
#include "platform/linux/x11/X11EventMonitors.h"
#include "platform/x11/keys/InputDriver.h"
#include "support/ToolkitTest.h"
#include "ui/MainQueueLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QPlainTextEdit>
#include <QShortcut>
#include <QWindow>

#include <linux/input-event-codes.h>

#include <functional>
#include <vector>

namespace lumiwren::testing {
namespace {

using ::testing::ElementsAre;

constexpr std::uint32_t everything =
    eventMask::keyDown | eventMask::leftMouseDown | eventMask::rightMouseDown;

InputEvent key(std::uint16_t code, std::uint64_t flags = 0) {
  return {EventKind::KeyDown, code, flags};
}

/// A real X server, the toolkit on it, and an editor of ours that has the focus.
class LocalEventMonitorsTest : public ToolkitTest {
protected:
  void SetUp() override {
    editor_.resize(200, 200);
    editor_.show();
    focusEditor();
    // Above everything else that the program shows.
    user_.moveTo(100, 100);
  }

  void focusEditor() {
    waitUntil([this] { return editor_.windowHandle()->isExposed(); });
    user_.setFocus(static_cast<xcb_window_t>(editor_.winId()));
    waitUntil([this] { return editor_.isActiveWindow(); });
  }

  static void waitUntil(const std::function<bool()> &condition) {
    const QDeadlineTimer deadline(patience);
    while (!condition()) {
      ASSERT_FALSE(deadline.hasExpired());
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
  }

  /// Types a letter that no test consumes, and waits until the editor has it and everything before it.
  void typeMark() {
    user_.tap(KEY_Z);
    waitUntil([this] { return editor_.toPlainText().endsWith(QLatin1Char('z')); });
  }

  Handle record(LocalEventResult result = LocalEventResult::Pass) {
    return monitors_.addLocalMonitor(everything, [this, result](const InputEvent &event) {
      events_.push_back(event);
      return event == key(6) ? LocalEventResult::Pass : result;
    });
  }

  InputDriver user_;
  LocalEventMonitors monitors_;
  QPlainTextEdit editor_;
  std::vector<InputEvent> events_;
};

TEST_F(LocalEventMonitorsTest, SeesEachPressOnceAndTheWidgetHasItToo) {
  const auto handle = record();
  user_.tap(KEY_E);
  user_.tapTogether({KEY_LEFTSHIFT, KEY_E});
  user_.tapTogether({KEY_LEFTSHIFT, KEY_LEFTALT, KEY_LEFTMETA, KEY_T});
  user_.tapTogether({KEY_LEFTCTRL, KEY_F5});
  user_.tap(KEY_CAPSLOCK);
  user_.tap(KEY_Q);
  user_.tap(KEY_CAPSLOCK);
  typeMark();
  EXPECT_THAT(events_, ElementsAre(key(14), key(14, modifier::shift),
                                   key(17, modifier::shift | modifier::option | modifier::command),
                                   key(96, modifier::control), key(12, modifier::capsLock), key(6)));
  EXPECT_TRUE(editor_.toPlainText().startsWith(QStringLiteral("eE")));
}

TEST_F(LocalEventMonitorsTest, AConsumedKeyReachesNeitherTheWidgetNorOlderMonitors) {
  std::vector<std::string> asked;
  const Handle older = monitors_.addLocalMonitor(eventMask::keyDown, [&asked](const InputEvent &event) {
    asked.push_back("older " + std::to_string(event.keyCode));
    return LocalEventResult::Pass;
  });
  const Handle newer = monitors_.addLocalMonitor(eventMask::keyDown, [&asked](const InputEvent &event) {
    asked.push_back("newer " + std::to_string(event.keyCode));
    return event.keyCode == keyCode::e ? LocalEventResult::Consume : LocalEventResult::Pass;
  });
  user_.tap(KEY_E);
  user_.tap(KEY_T);
  typeMark();
  EXPECT_THAT(asked, ElementsAre("newer 14", "newer 17", "older 17", "newer 6", "older 6"));
  EXPECT_EQ(editor_.toPlainText(), QStringLiteral("tz"));
}

TEST_F(LocalEventMonitorsTest, AConsumedKeyTriggersNoShortcut) {
  int triggered = 0;
  QShortcut shortcut(QKeySequence(Qt::CTRL | Qt::Key_E), &editor_);
  QObject::connect(&shortcut, &QShortcut::activated, &editor_, [&triggered] { ++triggered; });
  user_.tapTogether({KEY_LEFTCTRL, KEY_E});
  typeMark();
  EXPECT_EQ(triggered, 1);

  editor_.clear();
  const auto handle = record(LocalEventResult::Consume);
  user_.tapTogether({KEY_LEFTCTRL, KEY_E});
  typeMark();
  EXPECT_EQ(triggered, 1);
  EXPECT_EQ(editor_.toPlainText(), QStringLiteral("z"));
  EXPECT_THAT(events_, ElementsAre(key(14, modifier::control), key(6)));
}

TEST_F(LocalEventMonitorsTest, AShortcutThatIsNotConsumedIsSeenOnce) {
  QShortcut shortcut(QKeySequence(Qt::CTRL | Qt::Key_E), &editor_);
  const auto handle = record();
  user_.tapTogether({KEY_LEFTCTRL, KEY_E});
  typeMark();
  EXPECT_THAT(events_, ElementsAre(key(14, modifier::control), key(6)));
}

TEST_F(LocalEventMonitorsTest, RepeatsOfAHeldKeyAreNoPresses) {
  {
    Process rate(Process::Options{.command = {"xset", "r", "rate", "10", "100"},
                                  .environment = server().environment()});
    ASSERT_EQ(rate.wait(), 0);
  }
  const auto handle = record();
  user_.press(KEY_E);
  waitUntil([this] { return editor_.toPlainText().size() >= 5; });
  user_.release(KEY_E);
  typeMark();
  EXPECT_THAT(events_, ElementsAre(key(14), key(6)));
}

TEST_F(LocalEventMonitorsTest, RepeatsOfAConsumedKeyAreSwallowedToo) {
  {
    Process rate(Process::Options{.command = {"xset", "r", "rate", "10", "100"},
                                  .environment = server().environment()});
    ASSERT_EQ(rate.wait(), 0);
  }
  int repeats = 0;
  class Counter : public QObject {
  public:
    explicit Counter(int &count) : count_(count) {}
    bool eventFilter(QObject *receiver, QEvent *event) override {
      if (receiver->isWindowType() && event->type() == QEvent::KeyRelease) {
        ++count_;
      }
      return false;
    }

  private:
    int &count_;
  } counter(repeats);
  QCoreApplication::instance()->installEventFilter(&counter);
  auto handle = record(LocalEventResult::Consume);
  user_.press(KEY_E);
  waitUntil([&repeats] { return repeats >= 5; });
  // The recorder is satisfied and goes away while the key is still down.
  handle.reset();
  const int before = repeats;
  waitUntil([&repeats, before] { return repeats >= before + 5; });
  user_.release(KEY_E);
  typeMark();
  EXPECT_EQ(editor_.toPlainText(), QStringLiteral("z"));
  EXPECT_THAT(events_, ElementsAre(key(14)));

  user_.tap(KEY_E);
  waitUntil([this] { return editor_.toPlainText() == QStringLiteral("ze"); });
}

TEST_F(LocalEventMonitorsTest, SeesClicksOnceAndMayConsumeThem) {
  class Receiver : public QWidget {
  public:
    int presses = 0;

  protected:
    void mousePressEvent(QMouseEvent *) override { ++presses; }
    void mouseDoubleClickEvent(QMouseEvent *) override { ++presses; }
  } receiver;
  receiver.setGeometry(300, 0, 100, 100);
  receiver.show();
  waitUntil([&receiver] { return receiver.windowHandle()->isExposed(); });
  user_.moveTo(350, 50);
  auto handle = record();
  user_.click(1);
  user_.click(1);
  user_.click(2);
  user_.click(3);
  waitUntil([&receiver] { return receiver.presses == 4; });
  EXPECT_THAT(events_, ElementsAre(InputEvent{EventKind::LeftMouseDown, 0, 0},
                                   InputEvent{EventKind::LeftMouseDown, 0, 0},
                                   InputEvent{EventKind::RightMouseDown, 0, 0}));
  handle = record(LocalEventResult::Consume);
  user_.click(3);
  user_.click(1);
  user_.click(2);
  waitUntil([&receiver] { return receiver.presses == 5; });
  EXPECT_EQ(events_.size(), 5U);
}

TEST_F(LocalEventMonitorsTest, AMonitorThatIsDroppedIsNotAskedAgain) {
  auto handle = record();
  const Handle dropping = monitors_.addLocalMonitor(everything, [&handle](const InputEvent &) {
    handle.reset();
    return LocalEventResult::Pass;
  });
  typeMark();
  EXPECT_TRUE(events_.empty());
}

TEST_F(LocalEventMonitorsTest, WhatTheProgramMakesUpItselfIsNoPress) {
  const auto handle = record(LocalEventResult::Consume);
  QKeyEvent event(QEvent::KeyPress, Qt::Key_E, Qt::NoModifier, QStringLiteral("e"));
  QCoreApplication::sendEvent(&editor_, &event);
  EXPECT_TRUE(events_.empty());
  EXPECT_EQ(editor_.toPlainText(), QStringLiteral("e"));
}

TEST_F(LocalEventMonitorsTest, EveryPressIsSeenEitherHereOrElsewhere) {
  MainQueue queue;
  const MainQueueLoop loop(queue);
  TestWindow other(TestWindow::Options{.x = 600, .width = 300});
  X11InputChannel channel;
  X11EventMonitors globals(queue, channel,
                           channel.connection().resourceBase(static_cast<xcb_window_t>(editor_.winId())));
  std::vector<InputEvent> here;
  std::vector<InputEvent> elsewhere;
  const Handle global = globals.addGlobalMonitor(
      everything, [&elsewhere](const InputEvent &event) { elsewhere.push_back(event); });
  const Handle local = monitors_.addLocalMonitor(everything, [&here](const InputEvent &event) {
    here.push_back(event);
    return LocalEventResult::Pass;
  });
  constexpr std::size_t rounds = 50;
  for (std::size_t round = 0; round < rounds; ++round) {
    user_.setFocus(static_cast<xcb_window_t>(editor_.winId()));
    user_.tap(round % 2 == 0 ? KEY_E : KEY_Q);  // The same key again in no time would be a repeat.
    user_.setFocus(other.id());
    user_.tap(KEY_T);
    user_.moveTo(100, 100);
    user_.click(1);
    user_.moveTo(700, 50);
    user_.click(3);
  }
  waitUntil([&] { return here.size() + elsewhere.size() >= 4 * rounds; });
  focusEditor();
  typeMark();
  EXPECT_EQ(here.size(), 2 * rounds + 1);
  EXPECT_EQ(elsewhere.size(), 2 * rounds);
  for (const auto &event : elsewhere) {
    EXPECT_TRUE(event == key(17) || event.kind == EventKind::RightMouseDown);
  }
}

}  // namespace
}  // namespace lumiwren::testing
