#include "platform/linux/x11/X11EventMonitors.h"

#include "platform/KeyCodes.h"
#include "platform/linux/x11/X11PanelWindows.h"
#include "platform/x11/keys/EventProbe.h"
#include "platform/x11/keys/InputDriver.h"
#include "support/XServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xcb/xinput.h>

#include <linux/input-event-codes.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>

namespace lumiwren::testing {
namespace {

using ::testing::ElementsAre;

constexpr std::uint32_t everything =
    eventMask::keyDown | eventMask::leftMouseDown | eventMask::rightMouseDown;

InputEvent key(std::uint16_t code, std::uint64_t flags = 0) {
  return {EventKind::KeyDown, code, flags};
}

InputEvent leftMouse(std::uint64_t flags = 0) {
  return {EventKind::LeftMouseDown, 0, flags};
}

InputEvent rightMouse(std::uint64_t flags = 0) {
  return {EventKind::RightMouseDown, 0, flags};
}

class X11EventMonitorsTest : public ::testing::Test {
protected:
  X11EventMonitorsTest() { setenv("DISPLAY", server_.display().c_str(), 1); }

  void SetUp() override {
    // Another application in front, and ours beside it.
    ownWindow_.emplace(TestWindow::Options{.x = 400});
    otherWindow_.emplace(TestWindow::Options{.x = 0});
    user_.emplace();
    channel_.emplace();
    monitors_.emplace(probe_.queue(), *channel_, ownWindow_->resourceBase());
    user_->moveTo(50, 50);
    otherWindow_->takeFocus();
    handle_ = monitors_->addGlobalMonitor(everything, probe_.handler());
    ASSERT_TRUE(handle_);
  }

  void run(std::vector<std::string> command) const {
    Process process(Process::Options{.command = std::move(command), .environment = server_.environment()});
    ASSERT_EQ(process.wait(), 0);
  }

  XServer server_;
  EventProbe probe_;
  std::optional<TestWindow> ownWindow_;
  std::optional<TestWindow> otherWindow_;
  std::optional<InputDriver> user_;
  std::optional<X11InputChannel> channel_;
  std::optional<X11EventMonitors> monitors_;
  Handle handle_;
};

TEST_F(X11EventMonitorsTest, ReportsKeysByPlaceWithTheModifiersThatAreDown) {
  user_->tap(KEY_E);
  user_->tapTogether({KEY_LEFTSHIFT, KEY_LEFTALT, KEY_E});
  user_->tapTogether({KEY_RIGHTCTRL, KEY_LEFTMETA, KEY_T});
  user_->tap(KEY_ESC);
  EXPECT_THAT(probe_.take(4), ElementsAre(key(14), key(14, modifier::shift | modifier::option),
                                          key(17, modifier::control | modifier::command), key(53)));
}

TEST_F(X11EventMonitorsTest, TheOtherApplicationStillGetsItsKeys) {
  user_->tap(KEY_E);
  EXPECT_THAT(probe_.take(1), ElementsAre(key(14)));
  EXPECT_THAT(otherWindow_->takeKeys(),
              ElementsAre(TestWindow::Key{true, KEY_E + 8, 0}, TestWindow::Key{false, KEY_E + 8, 0}));
}

TEST_F(X11EventMonitorsTest, ModifiersAndLocksAloneAreNoPresses) {
  for (const std::uint16_t code : std::initializer_list<std::uint16_t>{
           KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTCTRL, KEY_LEFTALT, KEY_RIGHTALT, KEY_LEFTMETA, KEY_CAPSLOCK,
           KEY_CAPSLOCK, KEY_NUMLOCK, KEY_NUMLOCK}) {
    user_->tap(code);
  }
  user_->tap(KEY_E);
  EXPECT_THAT(probe_.take(1), ElementsAre(key(14)));
}

TEST_F(X11EventMonitorsTest, CapsLockIsAFlagOfItsOwnAndNumLockIsNone) {
  user_->tap(KEY_CAPSLOCK);
  user_->tap(KEY_NUMLOCK);
  user_->tapTogether({KEY_LEFTSHIFT, KEY_E});
  user_->tap(KEY_KP7);
  EXPECT_THAT(probe_.take(2),
              ElementsAre(key(14, modifier::shift | modifier::capsLock), key(89, modifier::capsLock)));
}

TEST_F(X11EventMonitorsTest, AHeldKeyIsOnePress) {
  run({"xset", "r", "rate", "10", "100"});
  user_->press(KEY_E);
  // The application sees it repeat: the first press, and a release and a press for each time.
  std::size_t keys = 0;
  while (keys < 7) {
    keys += otherWindow_->takeKeys().size();
  }
  user_->release(KEY_E);
  user_->tap(KEY_T);
  EXPECT_THAT(probe_.take(2), ElementsAre(key(14), key(17)));
}

TEST_F(X11EventMonitorsTest, SeesKeysDuringAGrabOfAnotherApplication) {
  xcb_connection_t *connection = otherWindow_->connection().get();
  const XReply<xcb_grab_keyboard_reply_t> grab(
      xcb_grab_keyboard_reply(connection,
                              xcb_grab_keyboard(connection, 0, otherWindow_->id(), XCB_CURRENT_TIME,
                                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                              nullptr));
  ASSERT_TRUE(grab && grab->status == XCB_GRAB_STATUS_SUCCESS);
  user_->tapTogether({KEY_LEFTALT, KEY_E});
  EXPECT_THAT(probe_.take(1), ElementsAre(key(14, modifier::option)));
  EXPECT_EQ(otherWindow_->takeKeys().size(), 4U);
}

TEST_F(X11EventMonitorsTest, KeysThatGoToOurOwnWindowsAreNotReported) {
  ownWindow_->takeFocus();
  user_->tap(KEY_E);
  otherWindow_->takeFocus();
  user_->tap(KEY_T);
  ownWindow_->takeFocus();
  user_->tap(KEY_E);
  otherWindow_->takeFocus();
  user_->tap(KEY_ESC);
  EXPECT_THAT(probe_.take(2), ElementsAre(key(17), key(53)));
}

TEST_F(X11EventMonitorsTest, EveryKeyIsEitherOursOrReportedHoweverFastTheFocusMoves) {
  std::size_t own = 0;
  std::size_t others = 0;
  constexpr std::size_t presses = 400;
  // Nobody waits for anybody: the order is the server's alone.
  for (std::size_t index = 0; index < presses; ++index) {
    xcb_connection_t *connection = user_->connection().get();
    const auto &window = index % 3 == 0 ? *ownWindow_ : *otherWindow_;
    xcb_set_input_focus(connection, XCB_INPUT_FOCUS_POINTER_ROOT, window.id(), XCB_CURRENT_TIME);
    user_->tap(KEY_E);
  }
  for (const auto &pressed : ownWindow_->takeKeys()) {
    own += pressed.down ? 1 : 0;
  }
  for (const auto &pressed : otherWindow_->takeKeys()) {
    others += pressed.down ? 1 : 0;
  }
  EXPECT_EQ(own + others, presses);
  otherWindow_->takeFocus();
  user_->tap(KEY_ESC);
  EXPECT_EQ(probe_.take(others + 1).size(), others + 1);
}

TEST_F(X11EventMonitorsTest, AWindowOfOursThatIsMadeLaterCountsToo) {
  const xcb_window_t later = xcb_generate_id(ownWindow_->connection().get());
  xcb_connection_t *connection = ownWindow_->connection().get();
  xcb_create_window(connection, XCB_COPY_FROM_PARENT, later, ownWindow_->connection().root(), 0, 0, 100, 100,
                    0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
  xcb_map_window(connection, later);
  xcb_set_input_focus(connection, XCB_INPUT_FOCUS_POINTER_ROOT, later, XCB_CURRENT_TIME);
  ownWindow_->finish();
  // The pointer is above it, too. The first presses may come before the window is known.
  user_->tap(KEY_T);
  user_->click(1);
  otherWindow_->takeFocus();
  user_->tap(KEY_ESC);
  auto events = probe_.take(1);
  while (events.back() != key(53)) {
    events = probe_.take(1);
  }
  xcb_set_input_focus(connection, XCB_INPUT_FOCUS_POINTER_ROOT, later, XCB_CURRENT_TIME);
  ownWindow_->finish();
  user_->tap(KEY_E);
  user_->click(1);
  xcb_destroy_window(connection, later);
  ownWindow_->finish();
  otherWindow_->takeFocus();
  user_->tap(KEY_T);
  user_->click(3);
  EXPECT_THAT(probe_.take(2), ElementsAre(key(17), rightMouse()));
}

TEST_F(X11EventMonitorsTest, KeysThatAGrabOfOursGetsAreNotReported) {
  xcb_connection_t *connection = ownWindow_->connection().get();
  const XReply<xcb_grab_keyboard_reply_t> grab(
      xcb_grab_keyboard_reply(connection,
                              xcb_grab_keyboard(connection, 1, ownWindow_->id(), XCB_CURRENT_TIME,
                                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                              nullptr));
  ASSERT_TRUE(grab && grab->status == XCB_GRAB_STATUS_SUCCESS);
  user_->tap(KEY_E);
  xcb_ungrab_keyboard(connection, XCB_CURRENT_TIME);
  ownWindow_->finish();
  user_->tap(KEY_T);
  EXPECT_THAT(probe_.take(1), ElementsAre(key(17)));
  EXPECT_EQ(ownWindow_->takeKeys().size(), 2U);
}

TEST_F(X11EventMonitorsTest, WithoutAFocusTheKeysBelongToTheWindowUnderThePointer) {
  user_->setFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
  user_->moveTo(450, 50);
  user_->tap(KEY_E);
  user_->moveTo(50, 50);
  user_->tap(KEY_T);
  EXPECT_THAT(probe_.take(1), ElementsAre(key(17)));
}

TEST_F(X11EventMonitorsTest, PressesAreTimedByTheClockThatTellsTheCurrentTime) {
  X11PanelWindows windows(nullptr, 1, [](int, const std::function<void()> &) { return Handle(); });
  const auto before = windows.currentTime();
  while (windows.currentTime() == before) {
  }
  user_->click(1);
  const auto pressed = probe_.take(1);
  ASSERT_EQ(pressed.size(), 1U);
  while (windows.currentTime() == pressed[0].time) {
  }
  const InputEvent later{.time = windows.currentTime()};
  EXPECT_TRUE(pressed[0].isLaterThan(before));
  EXPECT_TRUE(later.isLaterThan(pressed[0].time));
}

TEST_F(X11EventMonitorsTest, ReportsBothMouseButtonsButNotTheWheel) {
  user_->click(1);
  user_->click(2);
  user_->click(4);
  user_->click(5);
  user_->press(KEY_LEFTSHIFT);
  user_->click(3);
  user_->release(KEY_LEFTSHIFT);
  EXPECT_THAT(probe_.take(2), ElementsAre(leftMouse(), rightMouse(modifier::shift)));
}

TEST_F(X11EventMonitorsTest, ClicksOnOurOwnWindowsAreNotReported) {
  user_->moveTo(450, 50);
  user_->click(1);
  user_->moveTo(50, 50);
  user_->click(3);
  // A window of ours that comes up under a pointer that rests.
  const std::uint32_t values[] = {0, 0};
  xcb_configure_window(ownWindow_->connection().get(), ownWindow_->id(),
                       XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
  const std::uint32_t above = XCB_STACK_MODE_ABOVE;
  xcb_configure_window(ownWindow_->connection().get(), ownWindow_->id(), XCB_CONFIG_WINDOW_STACK_MODE,
                       &above);
  ownWindow_->finish();
  user_->click(1);
  xcb_unmap_window(ownWindow_->connection().get(), ownWindow_->id());
  ownWindow_->finish();
  user_->click(3);
  EXPECT_THAT(probe_.take(2), ElementsAre(rightMouse(), rightMouse()));
}

TEST_F(X11EventMonitorsTest, ALeftHandedMouseHasItsPrimaryButtonOnTheRight) {
  run({"xmodmap", "-e", "pointer = 3 2 1"});
  user_->click(1);
  user_->click(3);
  EXPECT_THAT(probe_.take(2), ElementsAre(rightMouse(), leftMouse()));
}

TEST_F(X11EventMonitorsTest, TheButtonsOfOneMouseAloneMayBeSwapped) {
  constexpr std::uint8_t xtestPointer = 4;  // the device behind the driver, on every server
  const std::uint8_t swapped[] = {3, 2, 1, 4, 5, 6, 7, 8, 9, 10};
  xcb_connection_t *connection = user_->connection().get();
  const XReply<xcb_input_set_device_button_mapping_reply_t> reply(xcb_input_set_device_button_mapping_reply(
      connection, xcb_input_set_device_button_mapping(connection, xtestPointer, sizeof swapped, swapped),
      nullptr));
  ASSERT_TRUE(reply && reply->status == XCB_MAPPING_STATUS_SUCCESS);
  user_->click(1);
  user_->click(3);
  EXPECT_THAT(probe_.take(2), ElementsAre(rightMouse(), leftMouse()));
}

TEST_F(X11EventMonitorsTest, KeysKeepTheirPlaceInOtherLayouts) {
  for (const char *layout : {"ru", "us(dvorak)", "de", "us,ru"}) {
    run({"setxkbmap", layout});
    user_->tapTogether({KEY_LEFTALT, KEY_LEFTSHIFT, KEY_E});
    EXPECT_THAT(probe_.take(1), ElementsAre(key(14, modifier::option | modifier::shift))) << layout;
  }
  user_->lockGroup(1);
  user_->tapTogether({KEY_LEFTMETA, KEY_T});
  EXPECT_THAT(probe_.take(1), ElementsAre(key(17, modifier::command)));
}

TEST_F(X11EventMonitorsTest, RemappedModifiersCountAsWhatTheyAreNow) {
  run({"setxkbmap", "us", "-option", "altwin:swap_lalt_lwin", "-option", "ctrl:nocaps"});
  user_->tapTogether({KEY_LEFTALT, KEY_E});
  user_->tapTogether({KEY_LEFTMETA, KEY_E});
  user_->tapTogether({KEY_CAPSLOCK, KEY_E});
  EXPECT_THAT(probe_.take(3),
              ElementsAre(key(14, modifier::command), key(14, modifier::option), key(14, modifier::control)));
}

TEST_F(X11EventMonitorsTest, EscapeIsWhereTheUserHasPutIt) {
  run({"setxkbmap", "us", "-option", "caps:swapescape"});
  user_->tap(KEY_CAPSLOCK);
  user_->tap(KEY_ESC);
  user_->tap(KEY_ESC);
  user_->tap(KEY_E);
  EXPECT_THAT(probe_.take(2), ElementsAre(key(53), key(14)));
}

TEST_F(X11EventMonitorsTest, AltGrIsNotAlt) {
  run({"setxkbmap", "de"});
  user_->tapTogether({KEY_RIGHTALT, KEY_E});
  EXPECT_THAT(probe_.take(1), ElementsAre(key(14)));
}

TEST_F(X11EventMonitorsTest, ReleasesOfKeysThatAreNotDownChangeNothing) {
  user_->press(KEY_LEFTALT);
  user_->releaseAll({KEY_LEFTSHIFT, KEY_LEFTSHIFT, KEY_E});
  user_->tap(KEY_E);
  user_->releaseAll({KEY_LEFTALT, KEY_LEFTALT});
  user_->tap(KEY_E);
  EXPECT_THAT(probe_.take(2), ElementsAre(key(14, modifier::option), key(14)));
}

TEST_F(X11EventMonitorsTest, OurOwnStrokesAreNoPressesButThoseOfOthersAre) {
  for (int round = 0; round < 100; ++round) {
    channel_->post({.strokes = {{KeyDirection::Down, KEY_LEFTCTRL + 8},
                                {KeyDirection::Down, KEY_C + 8},
                                {KeyDirection::Up, KEY_C + 8},
                                {KeyDirection::Up, KEY_LEFTCTRL + 8}}});
    user_->tapTogether({KEY_LEFTCTRL, KEY_C});
  }
  // Which modifiers are down at which moment is left to chance here.
  for (const auto &event : probe_.take(100)) {
    EXPECT_EQ(event.keyCode, 8);
  }
  user_->tap(KEY_ESC);
  EXPECT_THAT(probe_.take(1), ElementsAre(key(53)));
}

TEST_F(X11EventMonitorsTest, AMonitorHearsOnlyWhatItAskedForAndNothingOnceItIsDropped) {
  EventProbe keysOnly;
  std::vector<InputEvent> keys;
  Handle keysHandle = monitors_->addGlobalMonitor(
      eventMask::keyDown, [&keys](const InputEvent &event) { keys.push_back(event); });
  user_->click(1);
  user_->tap(KEY_E);
  probe_.take(2);
  EXPECT_THAT(keys, ElementsAre(key(14)));

  user_->tap(KEY_T);
  keysHandle.reset();  // The press may be on its way already.
  user_->tap(KEY_ESC);
  EXPECT_THAT(probe_.take(2), ElementsAre(key(17), key(53)));
  EXPECT_THAT(keys, ElementsAre(key(14)));
}

TEST_F(X11EventMonitorsTest, AMonitorMayOutliveTheMonitoring) {
  user_->tap(KEY_E);
  monitors_.reset();
  probe_.queue().runPending();
  handle_.reset();
}

TEST_F(X11EventMonitorsTest, EndsAtOnceWhenTheServerHangs) {
  server_.process().kill(SIGSTOP);
  monitors_.reset();
  server_.process().kill(SIGCONT);
}

TEST_F(X11EventMonitorsTest, SurvivesTheServer) {
  server_.process().kill(SIGKILL);
  ASSERT_TRUE(server_.process().wait());
  monitors_.reset();
}

TEST(X11EventMonitors, WithoutAServerThereIsNoHandle) {
  setenv("DISPLAY", ":9999", 1);
  EventProbe probe;
  X11InputChannel channel;
  X11EventMonitors monitors(probe.queue(), channel, 0);
  EXPECT_FALSE(monitors.addGlobalMonitor(everything, probe.handler()));
}

}  // namespace
}  // namespace lumiwren::testing
