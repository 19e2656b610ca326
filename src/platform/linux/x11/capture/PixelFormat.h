#pragma once

#include "platform/linux/x11/capture/RGBImage.h"

#include <cstdint>
#include <span>

namespace lumiwren {

/// How an X server lays out the pixels of a TrueColor screen.
struct PixelFormat {
  int bitsPerPixel = 32;  // 16, 24 or 32
  int rowAlignment = 32;  // bits
  bool mostSignificantByteFirst = false;
  std::uint32_t redMask = 0xff0000;
  std::uint32_t greenMask = 0xff00;
  std::uint32_t blueMask = 0xff;
  friend bool operator==(const PixelFormat &, const PixelFormat &) = default;

  /// Whether rgbImage() knows it.
  bool isSupported() const;
  std::size_t bytesPerRow(int width) const;
};

/// The colours of `width` x `height` pixels, exactly: a channel with fewer bits than a sample is widened so
/// that its darkest stays 0 and its brightest becomes the brightest; channels of more than 8 bits make
/// samples of 16. `data` has bytesPerRow() for each row.
RGBImage rgbImage(std::span<const std::uint8_t> data, int width, int height, const PixelFormat &format);

}  // namespace lumiwren
