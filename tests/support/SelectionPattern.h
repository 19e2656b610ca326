#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumiwren::testing {

/// Bytes of which no part looks like another, for large transfers.
inline std::vector<std::uint8_t> patternBytes(std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t index = 0; index < size; ++index) {
    bytes[index] = static_cast<std::uint8_t>(index * 31 + (index >> 8) + (index >> 16));
  }
  return bytes;
}

}  // namespace lumiwren::testing
