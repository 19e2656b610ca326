#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

namespace lumiwren {

enum class KeyDirection : std::uint8_t { Down, Up };

struct KeyStroke {
  KeyDirection direction;
  xcb_keycode_t keycode;
  friend bool operator==(const KeyStroke &, const KeyStroke &) = default;
};

/// Strokes that belong together, and the modifiers that must not be locked or latched meanwhile.
struct KeyChord {
  std::vector<KeyStroke> strokes;
  std::uint8_t lockedModifiers = 0;  // real modifiers to unlock before and to lock again after
  bool breaksLatches = false;        // forget modifiers that were tapped to act on the next key
  friend bool operator==(const KeyChord &, const KeyChord &) = default;
};

/// The connection on which this program sees the key presses of the whole session and posts strokes of its
/// own. It is one connection for both because the server marks every event with the last request that it had
/// carried out for that connection: so a press that we posted ourselves is known with certainty.
class X11InputChannel {
public:
  X11InputChannel();

  /// Whether the server lets us watch (XInput 2.2, XKB) and post (XTEST). Any thread.
  bool isUsable() const { return usable_; }
  const X11Connection &connection() const { return connection_; }
  std::uint8_t inputOpcode() const { return inputOpcode_; }
  std::uint8_t xkbFirstEvent() const { return xkbFirstEvent_; }

  /// Posts the whole chord in one write, so that the server gets all of it or nothing, however this program
  /// ends. Any thread.
  void post(const KeyChord &chord);
  /// Whether a press that the server reported with this sequence number is one that was posted here. One
  /// thread, in the order of the events.
  bool isOwnPress(std::uint32_t sequence, std::uint32_t keycode);

  /// To be held while sending anything else on this connection: it would tear a chord apart.
  [[nodiscard]] std::unique_lock<std::mutex> lockForSending() { return std::unique_lock(sending_); }

  /// Waits for the next event; empty when the connection is gone, or after shutDown().
  XReply<xcb_generic_event_t> nextEvent();
  /// Ends the connection under whoever waits for it. Any thread.
  void shutDown();

private:
  struct OwnPress {
    std::uint32_t sequence;
    xcb_keycode_t keycode;
  };

  const X11Connection connection_;
  bool usable_ = false;
  std::uint8_t inputOpcode_ = 0;
  std::uint8_t xkbFirstEvent_ = 0;
  std::mutex sending_;
  std::mutex ownPressesMutex_;
  std::deque<OwnPress> ownPresses_;
};

}  // namespace lumiwren
