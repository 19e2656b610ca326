#pragma once

#include "platform/Image.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren::testing {

enum class PNGColor : std::uint8_t { Grey = 0, RGB = 2, Palette = 3, GreyAlpha = 4, RGBA = 6 };

struct PNGForm {
  std::uint32_t width = 1;
  std::uint32_t height = 1;
  std::uint8_t depth = 8;
  PNGColor color = PNGColor::RGB;
  bool isInterlaced = false;
};

inline Bytes bytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

inline Bytes deflated(const Bytes &bytes) {
  uLongf length = compressBound(static_cast<uLong>(bytes.size()));
  Bytes result(length);
  if (compress2(result.data(), &length, bytes.data(), static_cast<uLong>(bytes.size()), 9) != Z_OK) {
    throw std::runtime_error("compress2 failed");
  }
  result.resize(length);
  return result;
}

inline void appendNumber(Bytes &bytes, std::uint32_t number) {
  for (const int shift : {24, 16, 8, 0}) {
    bytes.push_back(static_cast<std::uint8_t>(number >> shift));
  }
}

inline Bytes pngChunk(std::string_view name, const Bytes &data) {
  Bytes named = bytesOf(name);
  named.insert(named.end(), data.begin(), data.end());
  Bytes chunk;
  appendNumber(chunk, static_cast<std::uint32_t>(data.size()));
  chunk.insert(chunk.end(), named.begin(), named.end());
  appendNumber(chunk, static_cast<std::uint32_t>(crc32(0, named.data(), static_cast<uInt>(named.size()))));
  return chunk;
}

/// A file from its parts: `rows` are all scan lines, each behind its filter byte; `extra` are chunks before
/// the pixels.
inline Image pngFile(const PNGForm &form, const Bytes &rows, const std::vector<Bytes> &extra = {}) {
  Bytes header;
  appendNumber(header, form.width);
  appendNumber(header, form.height);
  const std::uint8_t interlace = form.isInterlaced ? 1 : 0;
  header.insert(header.end(), {form.depth, static_cast<std::uint8_t>(form.color), 0, 0, interlace});
  Bytes file = bytesOf("\x89PNG\r\n\x1a\n");
  std::vector<Bytes> chunks{pngChunk("IHDR", header)};
  chunks.insert(chunks.end(), extra.begin(), extra.end());
  chunks.push_back(pngChunk("IDAT", deflated(rows)));
  chunks.push_back(pngChunk("IEND", {}));
  for (const auto &chunk : chunks) {
    file.insert(file.end(), chunk.begin(), chunk.end());
  }
  return {file};
}

/// A bitmap as a file of the most common form, or with the pixels in Adam7's seven passes.
inline Image pngFile(const Bitmap &bitmap, bool isInterlaced = false) {
  struct Pass {
    int left, top, across, down;
  };
  const std::vector<Pass> plain{{0, 0, 1, 1}};
  const std::vector<Pass> adam7{{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
  Bytes rows;
  for (const auto &pass : isInterlaced ? adam7 : plain) {
    for (int y = pass.top; y < bitmap.height && pass.left < bitmap.width; y += pass.down) {
      rows.push_back(0);
      for (int x = pass.left; x < bitmap.width; x += pass.across) {
        const auto *const pixel =
            &bitmap.rgb[3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(bitmap.width) +
                             static_cast<std::size_t>(x))];
        rows.insert(rows.end(), pixel, pixel + 3);
      }
    }
  }
  return pngFile({static_cast<std::uint32_t>(bitmap.width), static_cast<std::uint32_t>(bitmap.height), 8,
                  PNGColor::RGB, isInterlaced},
                 rows);
}

}  // namespace lumiwren::testing
