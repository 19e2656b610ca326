#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <memory>
#include <span>

namespace lumiwren {

/// Writes a picture without transparency as a PNG file in memory, row by row. Made for speed: the file is
/// read once and then removed.
class PNGEncoder {
public:
  /// `bitsPerSample` is 8 or 16. Throws std::bad_alloc.
  PNGEncoder(int width, int height, int bitsPerSample);
  PNGEncoder(const PNGEncoder &) = delete;
  PNGEncoder &operator=(const PNGEncoder &) = delete;
  ~PNGEncoder();

  /// The next row from the top: red, green and blue of each pixel, of samples of 16 bits the high byte first.
  void addRow(std::span<const std::uint8_t> samples);
  /// The file, when all rows are there.
  Bytes finish();

private:
  class Deflater;

  Bytes file_;
  std::size_t dataStart_ = 0;
  std::unique_ptr<Deflater> deflater_;
};

}  // namespace lumiwren
