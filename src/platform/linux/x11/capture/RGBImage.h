#pragma once

#include "base/Bytes.h"

namespace lumiwren {

/// Pixels without transparency: red, green and blue of each, rows from the top, nothing between them. Samples
/// of 16 bits have their high byte first.
struct RGBImage {
  int width = 0;          // pixels
  int height = 0;         // pixels
  int bitsPerSample = 8;  // 8 or 16
  Bytes samples;
  friend bool operator==(const RGBImage &, const RGBImage &) = default;
};

}  // namespace lumiwren
