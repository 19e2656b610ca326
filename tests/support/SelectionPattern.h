#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumiwren::testing {

/// The size of a large picture. ThreadSanitizer slows the copying of it down so much that it would not come
/// within the time that the pasteboard gives an owner.
#ifdef __SANITIZE_THREAD__
inline constexpr std::size_t pictureBytes = 2'000'001;
#else
inline constexpr std::size_t pictureBytes = 20'000'001;
#endif

/// Bytes of which no part looks like another, for large transfers.
inline std::vector<std::uint8_t> patternBytes(std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t index = 0; index < size; ++index) {
    bytes[index] = static_cast<std::uint8_t>(index * 31 + (index >> 8) + (index >> 16));
  }
  return bytes;
}

}  // namespace lumiwren::testing
