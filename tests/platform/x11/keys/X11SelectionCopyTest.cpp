#include "platform/linux/x11/X11SelectionCopy.h"

#include "base/Task.h"
#include "platform/KeyCodes.h"
#include "platform/linux/x11/X11EventMonitors.h"
#include "platform/x11/keys/EventProbe.h"
#include "platform/x11/keys/InputDriver.h"
#include "support/XServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

#include <cstdlib>
#include <optional>
#include <thread>
#include <utility>

namespace lumiwren::testing {
namespace {

using ::testing::ElementsAre;
using Key = TestWindow::Key;

constexpr std::uint8_t code(std::uint16_t evdev) {
  return static_cast<std::uint8_t>(evdev + 8);
}

/// What an application gets from a copy when nothing is held, if `letter` is the key for c.
std::vector<Key> chord(std::uint16_t letter = KEY_C, std::uint16_t control = KEY_LEFTCTRL,
                       std::uint16_t state = 0) {
  const auto withControl = static_cast<std::uint16_t>(state | XCB_MOD_MASK_CONTROL);
  return {{true, code(control), state},
          {true, code(letter), withControl},
          {false, code(letter), withControl},
          {false, code(control), withControl}};
}

class X11SelectionCopyTest : public ::testing::Test {
protected:
  X11SelectionCopyTest() { setenv("DISPLAY", server_.display().c_str(), 1); }

  void SetUp() override {
    window_.emplace(TestWindow::Options{.instance = "editor", .className = "Editor"});
    user_.emplace();
    questions_.emplace();
    channel_.emplace();
    window_->takeFocus();
    makeCopy({});
  }

  void makeCopy(const std::vector<std::string> &terminals) {
    copy_.emplace(
        *questions_, *channel_,
        [this](std::uint32_t window, const std::stop_token &) {
          copiedWindows_.push_back(window);
          return true;
        },
        terminals);
  }

  void run(std::vector<std::string> command) const {
    Process process(Process::Options{.command = std::move(command), .environment = server_.environment()});
    ASSERT_EQ(process.wait(), 0);
  }

  /// Copies, and waits until the server has carried out the chord.
  void copy() {
    copy_->postCopy({});
    const auto lock = channel_->lockForSending();
    xcb_connection_t *connection = channel_->connection().get();
    const XReply<xcb_get_input_focus_reply_t> done(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
  }

  XServer server_;
  std::optional<TestWindow> window_;
  std::optional<InputDriver> user_;
  std::optional<X11Connection> questions_;
  std::optional<X11InputChannel> channel_;
  std::optional<X11SelectionCopy> copy_;
  std::vector<std::uint32_t> copiedWindows_;
};

TEST_F(X11SelectionCopyTest, PostsControlAndC) {
  copy();
  EXPECT_EQ(window_->takeKeys(), chord());
  EXPECT_TRUE(user_->heldKeys().none());
  EXPECT_TRUE(copiedWindows_.empty());
}

TEST_F(X11SelectionCopyTest, LetsGoOfTheWholeHotkeyFirstAndPressesNothingAgain) {
  user_->pressAll({KEY_LEFTALT, KEY_LEFTSHIFT, KEY_RIGHTCTRL, KEY_LEFTMETA, KEY_E});
  window_->takeKeys();
  copy();
  auto keys = window_->takeKeys();
  ASSERT_EQ(keys.size(), 9U);
  // The letter goes first; without its modifiers it would begin to repeat as a letter.
  EXPECT_EQ(keys.front().keycode, code(KEY_E));
  for (std::size_t index = 0; index < 5; ++index) {
    EXPECT_FALSE(keys[index].down);
  }
  keys.erase(keys.begin(), keys.begin() + 5);
  EXPECT_EQ(keys, chord());
  EXPECT_TRUE(user_->heldKeys().none());
  EXPECT_EQ(user_->modifiers(), 0);

  user_->releaseAll({KEY_E, KEY_LEFTMETA, KEY_RIGHTCTRL, KEY_LEFTSHIFT, KEY_LEFTALT});
  EXPECT_TRUE(user_->heldKeys().none());
  EXPECT_EQ(user_->modifiers(), 0);
}

TEST_F(X11SelectionCopyTest, AHotkeyOnTheLetterCItselfIsNoObstacle) {
  user_->pressAll({KEY_LEFTMETA, KEY_C});
  window_->takeKeys();
  copy();
  EXPECT_THAT(window_->takeKeys(), ElementsAre(Key{false, code(KEY_C), XCB_MOD_MASK_4},
                                               Key{false, code(KEY_LEFTMETA), XCB_MOD_MASK_4}, chord()[0],
                                               chord()[1], chord()[2], chord()[3]));
}

TEST_F(X11SelectionCopyTest, LocksStayAndDoNotMatter) {
  user_->tap(KEY_CAPSLOCK);
  user_->tap(KEY_NUMLOCK);
  const std::uint8_t locked = user_->lockedModifiers();
  ASSERT_EQ(locked, XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2);
  window_->takeKeys();
  copy();
  EXPECT_EQ(window_->takeKeys(), chord(KEY_C, KEY_LEFTCTRL, locked));
  EXPECT_EQ(user_->lockedModifiers(), locked);
}

TEST_F(X11SelectionCopyTest, ALockKeyThatIsHeldIsLeftAlone) {
  user_->press(KEY_CAPSLOCK);
  copy();
  EXPECT_TRUE(user_->heldKeys()[code(KEY_CAPSLOCK)]);
  user_->release(KEY_CAPSLOCK);
  EXPECT_EQ(user_->lockedModifiers(), XCB_MOD_MASK_LOCK);
}

TEST_F(X11SelectionCopyTest, AModifierThatIsLockedIsSetAsideForTheChord) {
  user_->lockModifiers(XCB_MOD_MASK_SHIFT, XCB_MOD_MASK_SHIFT);
  copy();
  EXPECT_EQ(window_->takeKeys(), chord());
  EXPECT_EQ(user_->lockedModifiers(), XCB_MOD_MASK_SHIFT);
}

TEST_F(X11SelectionCopyTest, TheKeyIsTheOneThatTypesC) {
  struct {
    std::vector<std::string> layout;
    std::uint8_t group;
    std::uint16_t letter;
    std::uint16_t control;
  } const cases[] = {
      {{"us"}, 0, KEY_C, KEY_LEFTCTRL},
      {{"us(dvorak)"}, 0, KEY_I, KEY_LEFTCTRL},
      {{"fr(bepo)"}, 0, KEY_H, KEY_LEFTCTRL},
      {{"us,ru"}, 0, KEY_C, KEY_LEFTCTRL},
      {{"us,ru"}, 1, KEY_C, KEY_LEFTCTRL},
      {{"ru,us(dvorak)"}, 0, KEY_I, KEY_LEFTCTRL},
      {{"us,us(dvorak)"}, 0, KEY_C, KEY_LEFTCTRL},
      {{"us,us(dvorak)"}, 1, KEY_I, KEY_LEFTCTRL},
      {{"ru"}, 0, KEY_INSERT, KEY_LEFTCTRL},
      {{"us", "-option", "ctrl:swapcaps"}, 0, KEY_C, KEY_CAPSLOCK},
  };
  for (const auto &[layout, group, letter, control] : cases) {
    std::vector<std::string> command{"setxkbmap", "-option", ""};
    command.insert(command.end(), layout.begin(), layout.end());
    run(command);
    user_->lockGroup(group);
    copy();
    auto keys = window_->takeKeys();
    for (auto &key : keys) {
      key.state &= 0x7f;  // To old clients a second layout looks like Mod5.
    }
    EXPECT_EQ(keys, chord(letter, control)) << layout.front() << " " << int{group};
  }
}

TEST_F(X11SelectionCopyTest, AnAltGrThatIsHeldIsLetGo) {
  run({"setxkbmap", "de"});
  user_->press(KEY_RIGHTALT);
  window_->takeKeys();
  copy();
  const auto keys = window_->takeKeys();
  ASSERT_EQ(keys.size(), 5U);
  EXPECT_EQ(keys[2].state, XCB_MOD_MASK_CONTROL);
  EXPECT_TRUE(user_->heldKeys().none());
}

TEST_F(X11SelectionCopyTest, ATerminalGetsNoKeyAndItsSelectionIsCopied) {
  TestWindow terminal(TestWindow::Options{.x = 300, .instance = "xterm", .className = "XTerm"});
  terminal.takeFocus();
  user_->pressAll({KEY_LEFTALT, KEY_E});
  terminal.takeKeys();
  copy();
  EXPECT_TRUE(terminal.takeKeys().empty());
  EXPECT_TRUE(user_->heldKeys()[code(KEY_E)]);
  EXPECT_THAT(copiedWindows_, ElementsAre(terminal.id()));
}

TEST_F(X11SelectionCopyTest, ATerminalIsKnownByAnyWindowAroundTheFocus) {
  TestWindow terminal(TestWindow::Options{.instance = "my", .className = "Konsole"});
  const xcb_window_t inner = xcb_generate_id(terminal.connection().get());
  xcb_create_window(terminal.connection().get(), XCB_COPY_FROM_PARENT, inner, terminal.id(), 0, 0, 10, 10, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
  xcb_map_window(terminal.connection().get(), inner);
  terminal.finish();
  user_->setFocus(inner);
  copy();
  EXPECT_THAT(copiedWindows_, ElementsAre(inner));
  EXPECT_TRUE(terminal.takeKeys().empty());
}

TEST_F(X11SelectionCopyTest, TheUserMayNameMoreTerminals) {
  TestWindow terminal(TestWindow::Options{.instance = "x", .className = "MyTerm"});
  terminal.takeFocus();
  makeCopy({"myterm"});
  copy();
  EXPECT_TRUE(terminal.takeKeys().empty());
  EXPECT_EQ(copiedWindows_.size(), 1U);
}

TEST_F(X11SelectionCopyTest, AWindowWithoutAClassIsAnApplication) {
  TestWindow plain;
  plain.takeFocus();
  copy();
  EXPECT_EQ(plain.takeKeys(), chord());
}

TEST_F(X11SelectionCopyTest, NothingIsPostedWhenNobodyIsInFront) {
  for (const xcb_window_t nobody :
       {xcb_window_t{XCB_INPUT_FOCUS_NONE}, xcb_window_t{XCB_INPUT_FOCUS_POINTER_ROOT}, questions_->root()}) {
    user_->setFocus(nobody);
    user_->press(KEY_E);
    copy();
    EXPECT_TRUE(user_->heldKeys()[code(KEY_E)]);
    user_->release(KEY_E);
  }
  EXPECT_TRUE(copiedWindows_.empty());
}

TEST_F(X11SelectionCopyTest, ACancelledCopyPostsNothing) {
  std::stop_source source;
  source.request_stop();
  user_->pressAll({KEY_LEFTALT, KEY_E});
  window_->takeKeys();
  EXPECT_THROW(copy_->postCopy(source.get_token()), CancellationError);
  copy();  // One that is not cancelled, after which the server has seen everything.
  EXPECT_EQ(window_->takeKeys().size(), 2U + 4U);
}

TEST_F(X11SelectionCopyTest, WindowsThatCloseMeanwhileDoNoHarm) {
  std::jthread closer([](const std::stop_token &token) {
    while (!token.stop_requested()) {
      TestWindow window(TestWindow::Options{.instance = "short", .className = "Lived"});
      window.takeFocus();
    }
  });
  for (int round = 0; round < 300; ++round) {
    copy_->postCopy({});
  }
  closer.request_stop();
  closer.join();
  window_->takeFocus();
  window_->takeKeys();
  copy();
  EXPECT_EQ(window_->takeKeys(), chord());
  EXPECT_TRUE(user_->heldKeys().none());
}

TEST_F(X11SelectionCopyTest, CopiesFromSeveralThreadsDoNotMix) {
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([this] {
        for (int round = 0; round < 25; ++round) {
          copy_->postCopy({});
        }
      });
    }
  }
  copy();
  const auto keys = window_->takeKeys();
  // A copy may find the keys of another one down, and lets go of them.
  EXPECT_TRUE(user_->heldKeys().none());
  EXPECT_EQ(user_->modifiers(), 0);
  std::size_t letters = 0;
  for (const auto &key : keys) {
    letters += key.down && key.keycode == code(KEY_C) && key.state == XCB_MOD_MASK_CONTROL ? 1 : 0;
  }
  EXPECT_EQ(letters, 101U);
}

TEST_F(X11SelectionCopyTest, TheMonitorsDoNotTakeTheChordForAPress) {
  EventProbe probe;
  X11EventMonitors monitors(probe.queue(), *channel_, 0);
  const Handle handle = monitors.addGlobalMonitor(eventMask::keyDown, probe.handler());
  user_->pressAll({KEY_LEFTALT, KEY_E});
  for (int round = 0; round < 20; ++round) {
    copy();
  }
  user_->releaseAll({KEY_E, KEY_LEFTALT});
  user_->tap(KEY_ESC);
  EXPECT_THAT(probe.take(2), ElementsAre(InputEvent{EventKind::KeyDown, 14, modifier::option},
                                         InputEvent{EventKind::KeyDown, 53, 0}));
}

TEST(X11SelectionCopy, WithoutAServerNothingHappens) {
  setenv("DISPLAY", ":9999", 1);
  const X11Connection questions;
  X11InputChannel channel;
  X11SelectionCopy copy(questions, channel, nullptr, {});
  copy.postCopy({});
}

}  // namespace
}  // namespace lumiwren::testing
