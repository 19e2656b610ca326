#pragma once

#include "platform/linux/x11/X11KeyMap.h"
#include "platform/linux/x11/capture/CaptureDisplay.h"
#include "platform/linux/x11/capture/CaptureEvent.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace lumiwren {

/// The user's pointer and keyboard, taken away from all other programs.
///
/// A program with an open menu has taken the session's pointer and keyboard for itself, and nobody else gets
/// them until it lets go. The mice and keyboards behind them can still be taken one by one; then they do not
/// move the session's pointer any more, which stays where it is and is hidden.
class CaptureInput {
public:
  /// What is given by reference outlives this object. `cursor` is shown while the session's pointer is taken.
  CaptureInput(const CaptureDisplay &display, xcb_cursor_t cursor);
  CaptureInput(const CaptureInput &) = delete;
  CaptureInput &operator=(const CaptureInput &) = delete;
  ~CaptureInput();

  /// Takes what is not taken yet and can be had now. Waits for the server.
  void take();
  /// How long to wait for the next take(); nothing when there is nothing more to take.
  std::optional<std::chrono::milliseconds> pause() const;
  bool hasPointer() const { return pointer_ != Grip::None; }
  /// Whether the session's pointer is hidden, so that one has to be drawn.
  bool hidesPointer() const { return pointer_ == Grip::Devices; }
  PixelPoint pointer() const { return place_; }

  /// What an event means; nothing for those that are not the user's.
  std::optional<CaptureEvent> event(const xcb_generic_event_t &event);
  /// Moves the pointer; a motion event follows.
  void movePointer(int dx, int dy) const;
  /// Whether the user holds a button, or a key that was pressed since it was taken.
  bool isHeld() const { return !heldButtons_.empty() || !heldKeys_.empty(); }
  /// Gives everything back.
  void release();

private:
  enum class Grip : std::uint8_t { None, Session, Devices };
  enum class Kind : std::uint8_t { Pointer, Keyboard };

  void readDevices();
  /// Whether the session's own pointer or keyboard could be taken.
  bool takeSession(Kind kind);
  /// Whether a device of the kind could be taken; none is while a key or button of it is down, whose release
  /// the program that saw the press has to see.
  bool takeDevices(Kind kind);
  bool takeDevice(std::uint16_t device, Kind kind);
  /// What was taken last, from the given number on.
  void giveBack(std::size_t from);
  bool isIdle(Kind kind) const;

  const CaptureDisplay &display_;
  xcb_connection_t *server_;
  xcb_window_t root_;
  xcb_cursor_t cursor_;
  std::uint16_t sessionPointer_ = 0;
  std::uint16_t sessionKeyboard_ = 0;
  std::vector<std::uint16_t> pointers_, keyboards_;  // the devices behind them
  std::vector<std::uint16_t> taken_;
  std::uint16_t moving_ = 0;  // the pointer that moved last
  Grip pointer_ = Grip::None;
  Grip keyboard_ = Grip::None;
  int attempts_ = 0;
  X11KeyMap keyMap_;
  PixelPoint place_;
  std::set<std::uint32_t> heldButtons_, heldKeys_;
};

}  // namespace lumiwren
