#pragma once

#include "platform/linux/KeySymbols.h"

#include <xcb/xcb.h>

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <vector>

namespace lumiwren {

using KeySet = std::bitset<256>;

/// What the keys of a keyboard do, in all its layouts (groups).
class X11KeyMap {
public:
  struct Key {
    std::uint8_t modifiers = 0;  // the real modifiers that the key sets
    /// As XKB has it: the number of groups, and what a key with fewer groups than the keyboard does.
    std::uint8_t groupInfo = 0;
    std::vector<KeySym> unshifted;  // one for each of the key's groups
  };

  X11KeyMap() = default;
  explicit X11KeyMap(std::array<Key, 256> keys);

  /// Asks the server for the keyboard's map. Empty when the server does not answer.
  static std::optional<X11KeyMap> read(xcb_connection_t *connection);

  /// What the key types without modifiers when `group` is active; 0 for a key that types nothing.
  KeySym symbol(xcb_keycode_t keycode, std::uint32_t group) const;

  /// Keys that are held down to modify others, and keys that lock something.
  const KeySet &modifierKeys() const { return modifierKeys_; }
  const KeySet &lockKeys() const { return lockKeys_; }

  /// The modifier flags (KeyCodes.h) of a set of real modifiers.
  std::uint64_t modifierFlags(std::uint8_t realModifiers) const;
  /// The real modifiers whose lock changes what a letter means to a program; Caps Lock and Num Lock do not.
  std::uint8_t disturbingModifiers() const;

  /// The key that sets Control.
  xcb_keycode_t controlKey() const;
  /// The key that copies, together with Control, while `activeGroup` is active: the one that types c there;
  /// where none does, the one that types it in another layout, to which programs resort for their shortcuts.
  /// With no Latin layout at all it is Insert, by which programs copy that know shortcuts by letters only;
  /// and on a keyboard that lacks even that, C's place on an ANSI keyboard.
  xcb_keycode_t copyKey(std::uint32_t activeGroup) const;

private:
  std::optional<xcb_keycode_t> keyTyping(KeySym wanted, std::uint32_t group) const;

  std::array<Key, 256> keys_{};
  KeySet modifierKeys_;
  KeySet lockKeys_;
  std::uint8_t altModifiers_ = 0;
  std::uint8_t superModifiers_ = 0;
  std::uint8_t numLockModifiers_ = 0;
};

}  // namespace lumiwren
