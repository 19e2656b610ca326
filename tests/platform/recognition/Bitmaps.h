#pragma once

#include "platform/Image.h"

#include <array>
#include <cstdint>
#include <random>

namespace lumiwren::testing {

using Color = std::array<std::uint8_t, 3>;

inline constexpr Color white{255, 255, 255};
inline constexpr Color black{0, 0, 0};

inline Bitmap plainBitmap(int width, int height, const Color &color) {
  Bitmap bitmap{width, height, {}};
  bitmap.rgb.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
  for (std::size_t at = 0; at < bitmap.rgb.size(); ++at) {
    bitmap.rgb[at] = color[at % 3];
  }
  return bitmap;
}

inline void fill(Bitmap &bitmap, int left, int top, int width, int height, const Color &color) {
  for (int y = top; y < top + height; ++y) {
    for (int x = left; x < left + width; ++x) {
      for (std::size_t channel = 0; channel < 3; ++channel) {
        bitmap.rgb[(static_cast<std::size_t>(y) * static_cast<std::size_t>(bitmap.width) +
                    static_cast<std::size_t>(x)) *
                       3 +
                   channel] = color[channel];
      }
    }
  }
}

/// The same on every machine.
inline Bitmap noise(int width, int height) {
  Bitmap bitmap = plainBitmap(width, height, white);
  std::mt19937 random(7);
  for (auto &value : bitmap.rgb) {
    value = static_cast<std::uint8_t>(random());
  }
  return bitmap;
}

}  // namespace lumiwren::testing
