#pragma once

#include <cstdint>
#include <optional>

namespace lumiwren {

/// What a key means in the user's layout, as X11 and Wayland sessions number it (X11/keysymdef.h).
using KeySym = std::uint32_t;

namespace keySym {
inline constexpr KeySym space = 0x20;
inline constexpr KeySym c = 0x63;
inline constexpr KeySym enter = 0xff0d;  // Return
inline constexpr KeySym scrollLock = 0xff14;
inline constexpr KeySym escape = 0xff1b;
inline constexpr KeySym left = 0xff51;
inline constexpr KeySym up = 0xff52;
inline constexpr KeySym right = 0xff53;
inline constexpr KeySym down = 0xff54;
inline constexpr KeySym insert = 0xff63;
inline constexpr KeySym modeSwitch = 0xff7e;
inline constexpr KeySym numLock = 0xff7f;
inline constexpr KeySym keypadEnter = 0xff8d;
inline constexpr KeySym keypadLeft = 0xff96;
inline constexpr KeySym keypadUp = 0xff97;
inline constexpr KeySym keypadRight = 0xff98;
inline constexpr KeySym keypadDown = 0xff99;
inline constexpr KeySym controlL = 0xffe3;
inline constexpr KeySym controlR = 0xffe4;
inline constexpr KeySym capsLock = 0xffe5;
inline constexpr KeySym shiftLock = 0xffe6;
inline constexpr KeySym altL = 0xffe9;
inline constexpr KeySym altR = 0xffea;
inline constexpr KeySym superL = 0xffeb;
inline constexpr KeySym superR = 0xffec;
}  // namespace keySym

/// Whether the key locks something as long as it is not pressed again.
bool isLockSymbol(KeySym symbol);
/// Whether the key only changes what others mean: modifiers, locks, level and layout shifts.
bool isModifierSymbol(KeySym symbol);

/// The key code (KeyCodes.h) that a press of a physical key is reported by; empty for what is no press: keys
/// that only modify others, which show in the modifier flags of the presses that follow, and keys that the
/// numbering does not have. The key's place counts, whatever it types, with one exception: Escape is what the
/// layout says it is, because people move it to Caps Lock.
std::optional<std::uint16_t> pressedKeyCode(std::uint32_t evdevCode, KeySym symbol);

}  // namespace lumiwren
