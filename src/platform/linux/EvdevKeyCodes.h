#pragma once

#include <cstdint>
#include <optional>

namespace lumiwren {

/// The kernel's names for physical keys (linux/input-event-codes.h), which X11 and Wayland sessions pass on
/// as key codes that are larger by evdevOffset, and the numbering of KeyCodes.h.
inline constexpr std::uint16_t evdevOffset = 8;

/// The key code of a physical key; empty for a key that the numbering does not have.
std::optional<std::uint16_t> keyCodeFromEvdev(std::uint32_t evdevCode);

/// The physical key of a key code; empty for a code that no key has.
std::optional<std::uint16_t> evdevFromKeyCode(std::uint16_t keyCode);

}  // namespace lumiwren
