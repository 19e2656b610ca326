#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumiwren {

/// Shades of grey: a byte for each pixel, rows from the top, nothing between them.
struct GreyImage {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels;

  std::size_t at(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
  }
};

/// A part of a picture, in pixels.
struct PixelBox {
  int left = 0, top = 0;
  int right = 0, bottom = 0;  // behind the last pixel

  int width() const { return right - left; }
  int height() const { return bottom - top; }
  friend bool operator==(const PixelBox &, const PixelBox &) = default;
};

}  // namespace lumiwren
