#include "platform/linux/screencapture/PNGEncoder.h"

#include <zlib.h>

#include <array>
#include <cstdint>
#include <new>
#include <span>
#include <string_view>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::size_t numberSize = 4;

void put(Bytes &file, std::size_t place, std::uint32_t number) {
  for (std::size_t byte = 0; byte < numberSize; ++byte) {
    file.at(place + byte) = static_cast<std::uint8_t>(number >> (24U - 8U * byte));
  }
}

void append(Bytes &file, std::uint32_t number) {
  file.resize(file.size() + numberSize);
  put(file, file.size() - numberSize, number);
}

void append(Bytes &file, std::string_view text) {
  for (const char character : text) {
    file.push_back(static_cast<std::uint8_t>(character));
  }
}

/// Begins a chunk; what is appended then is its content, up to endChunk().
std::size_t beginChunk(Bytes &file, std::string_view type) {
  const std::size_t start = file.size();
  append(file, 0);
  append(file, type);
  return start;
}

void endChunk(Bytes &file, std::size_t start) {
  constexpr std::size_t typeSize = 4;
  const std::size_t length = file.size() - start - numberSize - typeSize;
  put(file, start, static_cast<std::uint32_t>(length));
  append(file, static_cast<std::uint32_t>(crc32_z(0, file.data() + start + numberSize, typeSize + length)));
}

}  // namespace

class PNGEncoder::Deflater {
public:
  explicit Deflater(Bytes &file) : file_(file) {
    if (deflateInit(&stream_, Z_NO_COMPRESSION) != Z_OK) {
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

PNGEncoder::PNGEncoder(int width, int height, int bitsPerSample) {
  const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const std::size_t samples = pixels * static_cast<std::size_t>(bitsPerSample) / 8 * 3;
  // What is around the pixels is less than a hundredth of them, and more of the smallest pictures.
  file_.reserve(samples + samples / 100 + static_cast<std::size_t>(height) + 1000);
  append(file_, "\x89PNG\r\n\x1a\n");
  const std::size_t header = beginChunk(file_, "IHDR");
  append(file_, static_cast<std::uint32_t>(width));
  append(file_, static_cast<std::uint32_t>(height));
  constexpr int trueColor = 2;
  for (const int number : {bitsPerSample, trueColor, 0, 0, 0}) {
    file_.push_back(static_cast<std::uint8_t>(number));
  }
  endChunk(file_, header);
  dataStart_ = beginChunk(file_, "IDAT");
  deflater_ = std::make_unique<Deflater>(file_);
}

PNGEncoder::~PNGEncoder() = default;

void PNGEncoder::addRow(std::span<const std::uint8_t> samples) {
  constexpr std::uint8_t unfiltered = 0;
  deflater_->add(std::span(&unfiltered, 1));
  deflater_->add(samples);
}

Bytes PNGEncoder::finish() {
  deflater_->finish();
  endChunk(file_, dataStart_);
  endChunk(file_, beginChunk(file_, "IEND"));
  return std::move(file_);
}

}  // namespace lumiwren
