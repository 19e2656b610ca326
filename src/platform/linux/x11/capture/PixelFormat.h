#pragma once

#include <cstddef>
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

  /// Whether rgbRow() knows it.
  bool isSupported() const;
  std::size_t bytesPerRow(int width) const;
  /// Of rgbRow(): 16 when a channel has more than 8, else 8.
  int bitsPerSample() const;
  std::size_t samplesPerRow(int width) const;  // in bytes

  /// The colours of a row, exactly: red, green and blue of each pixel, of samples of 16 bits the high byte
  /// first. A channel with fewer bits than a sample is widened so that its darkest stays 0 and its brightest
  /// becomes the brightest. `samples` has room for as many pixels as are to be converted.
  void rgbRow(std::span<const std::uint8_t> pixels, std::span<std::uint8_t> samples) const;
};

}  // namespace lumiwren
