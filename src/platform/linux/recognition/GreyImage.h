#pragma once

#include <cstdint>
#include <vector>

namespace lumiwren {

/// Shades of grey: a byte for each pixel, rows from the top, nothing between them.
struct GreyImage {
  int width = 0;
  int height = 0;
  int resolution = 0;  // pixels per inch, as far as layout is concerned
  std::vector<std::uint8_t> pixels;
};

}  // namespace lumiwren
