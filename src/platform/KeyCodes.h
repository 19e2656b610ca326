#pragma once

#include <cstdint>

namespace lumiwren {

/// Modifier bits of an event and of a stored hotkey. The layout is that of the stored form.
namespace modifier {
inline constexpr std::uint64_t capsLock = 0x10000;
inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;    // Alt
inline constexpr std::uint64_t command = 0x100000;  // Super
/// The four bits that tell hotkeys apart.
inline constexpr std::uint64_t hotkeyMask = shift | control | option | command;
}  // namespace modifier

/// Key codes name physical keys by their place on an ANSI keyboard (the virtual key numbering of the stored
/// form), whatever the layout prints on them. Only the codes that the program itself refers to are named
/// here.
namespace keyCode {
inline constexpr std::uint16_t e = 14;
inline constexpr std::uint16_t t = 17;
inline constexpr std::uint16_t one = 18;
inline constexpr std::uint16_t escape = 53;
// The modifier keys themselves and nothing else, from the right command key to the function key.
inline constexpr std::uint16_t firstModifier = 54;
inline constexpr std::uint16_t lastModifier = 63;
}  // namespace keyCode

}  // namespace lumiwren
