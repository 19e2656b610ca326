#pragma once

#include <cstdint>
#include <vector>

namespace lumiwren {

/// A small picture to lay over the screen: premultiplied 0xAARRGGBB, rows from the top, nothing between them.
struct Sprite {
  int width = 0;   // pixels
  int height = 0;  // pixels
  std::vector<std::uint32_t> pixels;
  friend bool operator==(const Sprite &, const Sprite &) = default;
};

}  // namespace lumiwren
