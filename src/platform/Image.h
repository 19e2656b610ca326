#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace lumiwren {

/// A picture as its file has it (PNG). What it shows is decoded by whoever needs the pixels.
struct Image {
  Bytes file;
  friend bool operator==(const Image &, const Image &) = default;
};

/// Decoded pixels in sRGB: three bytes (red, green, blue) for each, rows from the top, nothing between them.
struct Bitmap {
  int width = 0;   // pixels
  int height = 0;  // pixels
  std::vector<std::uint8_t> rgb;
};

/// The pixels of a picture. Any thread; takes time in proportion to the pixels.
class ImageDecoder {
public:
  virtual ~ImageDecoder() = default;

  /// Empty when the file is not a picture, is damaged, or shows more than any desktop does. What is
  /// translucent is laid on white.
  virtual std::optional<Bitmap> bitmap(const Image &image) = 0;
};

}  // namespace lumiwren
