#pragma once

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11KeyMap.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace lumiwren::testing {

/// The hands of a user: keys (by evdev code) and mouse of an X server. Every call returns when the server has
/// done it.
class InputDriver {
public:
  /// Connects to what DISPLAY names.
  InputDriver();

  void press(std::uint16_t evdevCode) { fake(XCB_KEY_PRESS, keycode(evdevCode)); }
  void release(std::uint16_t evdevCode) { fake(XCB_KEY_RELEASE, keycode(evdevCode)); }
  void tap(std::uint16_t evdevCode);
  /// Presses all, in this order, and releases them backwards.
  void tapTogether(std::initializer_list<std::uint16_t> evdevCodes);
  void pressAll(std::initializer_list<std::uint16_t> evdevCodes);
  void releaseAll(std::initializer_list<std::uint16_t> evdevCodes);
  void click(std::uint8_t button);
  void pressButton(std::uint8_t button) { fake(XCB_BUTTON_PRESS, button); }
  void releaseButton(std::uint8_t button) { fake(XCB_BUTTON_RELEASE, button); }
  void moveTo(int x, int y);

  KeySet heldKeys() const;
  bool holdsButton() const;
  /// Real modifiers in effect.
  std::uint8_t modifiers() const;
  std::uint8_t lockedModifiers() const;
  void lockGroup(std::uint8_t group);
  void lockModifiers(std::uint8_t affected, std::uint8_t locked);
  xcb_window_t focus() const;
  void setFocus(xcb_window_t window);

  const X11Connection &connection() const { return connection_; }
  /// Waits until the server has carried out everything that was asked on this connection.
  void finish() const;

private:
  static std::uint8_t keycode(std::uint16_t evdevCode);
  void fake(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0);

  X11Connection connection_;
};

/// A window on a connection of its own, that is, another application as far as the server knows.
class TestWindow {
public:
  struct Options {
    int x = 0;
    int y = 0;
    std::uint16_t width = 100;
    std::uint16_t height = 100;
    std::string instance = {};  // no window class when empty
    std::string className = {};
  };

  explicit TestWindow(const Options &options);
  TestWindow() : TestWindow(Options{}) {}

  xcb_window_t id() const { return window_; }
  std::uint32_t resourceBase() const { return connection_.resourceBase(window_); }
  X11Connection &connection() { return connection_; }
  void takeFocus();

  struct Key {
    bool down;
    std::uint8_t keycode;
    std::uint16_t state;
    friend bool operator==(const Key &, const Key &) = default;
  };
  /// The presses and releases that the server has sent to the window, oldest first.
  std::vector<Key> takeKeys();

  /// Waits until the server has carried out everything that was asked on this connection.
  void finish() const;

private:
  X11Connection connection_;
  xcb_window_t window_ = XCB_NONE;
};

}  // namespace lumiwren::testing
