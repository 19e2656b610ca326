#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lumiwren {

/// A 128-bit identifier, in the byte order of its text form.
struct UUID {
  std::array<std::uint8_t, 16> bytes{};

  /// A fresh identifier of version 4 from the system's random source.
  static UUID random();
  /// Reads the canonical form of 36 characters, digits in either case; nothing else.
  static std::optional<UUID> parse(std::string_view text);
  /// The canonical form with upper-case digits.
  std::string toString() const;

  // NOLINTNEXTLINE(modernize-use-nullptr): the 0 that the comparison is written with is none of ours.
  friend auto operator<=>(const UUID &, const UUID &) = default;
};

}  // namespace lumiwren
