#include "platform/linux/screencapture/PNG.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <span>
#include <string_view>

namespace lumiwren {
namespace {

void append(Bytes &file, std::uint32_t number) {
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    file.push_back(static_cast<std::uint8_t>(number >> shift));
  }
}

void append(Bytes &file, std::string_view text) {
  file.insert(file.end(), text.begin(), text.end());
}

/// Begins a chunk; what is appended then is its content, up to endChunk().
std::size_t beginChunk(Bytes &file, std::string_view type) {
  const std::size_t start = file.size();
  append(file, 0);
  append(file, type);
  return start;
}

void endChunk(Bytes &file, std::size_t start) {
  constexpr std::size_t lengthSize = 4;
  constexpr std::size_t typeSize = 4;
  const auto length = static_cast<std::uint32_t>(file.size() - start - lengthSize - typeSize);
  Bytes number;
  append(number, length);
  std::copy(number.begin(), number.end(), file.begin() + static_cast<std::ptrdiff_t>(start));
  const std::span<const std::uint8_t> checked(file.begin() + static_cast<std::ptrdiff_t>(start + lengthSize),
                                              file.end());
  append(file, static_cast<std::uint32_t>(crc32_z(0, checked.data(), checked.size())));
}

class Deflater {
public:
  explicit Deflater(Bytes &file) : file_(file) {
    // Screens are made of runs: looking for nothing else is fast, and the runs are found all the same.
    constexpr int fastest = 1;
    constexpr int largestWindow = 15;
    constexpr int largestMemory = 9;
    if (deflateInit2(&stream_, fastest, Z_DEFLATED, largestWindow, largestMemory, Z_RLE) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  Deflater(const Deflater &) = delete;
  Deflater &operator=(const Deflater &) = delete;
  ~Deflater() { deflateEnd(&stream_); }

  void add(std::span<const std::uint8_t> data, int flush = Z_NO_FLUSH) {
    stream_.next_in = const_cast<Bytef *>(data.data());
    stream_.avail_in = static_cast<uInt>(data.size());
    do {
      stream_.next_out = buffer_.data();
      stream_.avail_out = static_cast<uInt>(buffer_.size());
      deflate(&stream_, flush);
      file_.insert(file_.end(), buffer_.begin(), buffer_.end() - stream_.avail_out);
    } while (stream_.avail_out == 0);
  }
  void finish() { add({}, Z_FINISH); }

private:
  Bytes &file_;
  z_stream stream_{};
  std::array<std::uint8_t, 65536> buffer_{};
};

}  // namespace

Bytes png(const RGBImage &image) {
  const auto height = static_cast<std::size_t>(image.height);
  const std::size_t rowSize = height == 0 ? 0 : image.samples.size() / height;
  Bytes file;
  append(file, "\x89PNG\r\n\x1a\n");
  const std::size_t header = beginChunk(file, "IHDR");
  append(file, static_cast<std::uint32_t>(image.width));
  append(file, static_cast<std::uint32_t>(image.height));
  constexpr std::uint8_t trueColor = 2;
  for (const int number : {image.bitsPerSample, int{trueColor}, 0, 0, 0}) {
    file.push_back(static_cast<std::uint8_t>(number));
  }
  endChunk(file, header);

  const std::size_t data = beginChunk(file, "IDAT");
  Deflater deflater(file);
  constexpr std::uint8_t up = 2;
  Bytes row(rowSize + 1);
  row[0] = up;
  const Bytes black(rowSize);
  const std::uint8_t *above = black.data();
  for (std::size_t index = 0; index < height; ++index) {
    const std::uint8_t *current = image.samples.data() + index * rowSize;
    for (std::size_t byte = 0; byte < rowSize; ++byte) {
      row[byte + 1] = static_cast<std::uint8_t>(current[byte] - above[byte]);
    }
    deflater.add(row);
    above = current;
  }
  deflater.finish();
  endChunk(file, data);
  endChunk(file, beginChunk(file, "IEND"));
  return file;
}

}  // namespace lumiwren
