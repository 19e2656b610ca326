#include "platform/linux/recognition/PNGDecoder.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

namespace lumiwren {
namespace {

constexpr std::size_t signatureLength = 8;
/// Deflate makes at most 258 bytes of two bits.
constexpr std::uint64_t maximumExpansion = 1032;
constexpr png_alloc_size_t maximumChunkMemory = 1'000'000;

/// Chunks that say nothing about pixels on a screen, and could say it in gigabytes once they are inflated.
/// Colour spaces are among them: the file has the screen's own values.
constexpr std::array<png_byte, 90> ignoredChunks = [] {
  constexpr std::array<const char *, 18> names{"iCCP", "zTXt", "iTXt", "tEXt", "sPLT", "hIST",
                                               "eXIf", "pCAL", "sCAL", "bKGD", "cHRM", "gAMA",
                                               "sRGB", "sBIT", "pHYs", "oFFs", "tIME", "sTER"};
  std::array<png_byte, 90> list{};  // four letters each, and their zero
  for (std::size_t name = 0; name < names.size(); ++name) {
    for (std::size_t letter = 0; letter < 4; ++letter) {
      list[name * 5 + letter] = static_cast<png_byte>(names[name][letter]);
    }
  }
  return list;
}();

/// Reads one file. libpng reports errors by a jump out of its functions, so nothing that has a destructor
/// lives in a function that calls them.
class Reader {
public:
  explicit Reader(std::span<const std::uint8_t> file)
      : file_(file), png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignore)) {
    info_ = png_ != nullptr ? png_create_info_struct(png_) : nullptr;
  }
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;
  ~Reader() { png_destroy_read_struct(&png_, &info_, nullptr); }

  /// Reads up to the pixels; false when there are none, or too many.
  bool readHeader() {
    if (info_ == nullptr || setjmp(png_jmpbuf(png_)) != 0) {  // NOLINT(cert-err52-cpp)
      return false;
    }
    png_set_user_limits(png_, PNGDecoder::maximumSide, PNGDecoder::maximumSide);
    png_set_chunk_malloc_max(png_, maximumChunkMemory);
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, 0);
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, ignoredChunks.data(), ignoredChunks.size() / 5);
    png_set_read_fn(png_, this, [](png_structp png, png_bytep target, std::size_t length) {
      static_cast<Reader *>(png_get_io_ptr(png))->copy(png, target, length);
    });
    png_read_info(png_, info_);
    const std::uint64_t rows = height();
    if (width() * rows > PNGDecoder::maximumPixels ||
        rows * (png_get_rowbytes(png_, info_) + 1) > file_.size() * maximumExpansion) {
      return false;
    }
    png_set_expand(png_);
    png_set_scale_16(png_);
    png_set_gray_to_rgb(png_);
    passes_ = png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    return true;
  }

  std::size_t width() const { return png_get_image_width(png_, info_); }
  std::size_t height() const { return png_get_image_height(png_, info_); }
  /// Three, or four when there is alpha.
  std::size_t channels() const { return png_get_channels(png_, info_); }

  /// Writes all rows, and checks what follows them.
  bool readPixels(std::uint8_t *pixels) {
    if (setjmp(png_jmpbuf(png_)) != 0) {  // NOLINT(cert-err52-cpp)
      return false;
    }
    const std::size_t rowLength = png_get_rowbytes(png_, info_);
    for (int pass = 0; pass < passes_; ++pass) {
      for (std::size_t row = 0; row < height(); ++row) {
        png_read_row(png_, pixels + row * rowLength, nullptr);
      }
    }
    png_read_end(png_, nullptr);
    return true;
  }

private:
  [[noreturn]] static void fail(png_structp png, png_const_charp) { png_longjmp(png, 1); }
  static void ignore(png_structp, png_const_charp) {}

  void copy(png_structp png, png_bytep target, std::size_t length) {
    if (length > file_.size() - position_) {
      png_error(png, "truncated");
    }
    std::memcpy(target, file_.data() + position_, length);
    position_ += length;
  }

  const std::span<const std::uint8_t> file_;
  std::size_t position_ = 0;
  png_structp png_;
  png_infop info_ = nullptr;
  int passes_ = 1;
};

/// Turns red, green, blue and alpha into the three of them on white, in place.
void layOnWhite(std::vector<std::uint8_t> &pixels) {
  std::size_t to = 0;
  for (std::size_t from = 0; from < pixels.size(); from += 4) {
    const unsigned alpha = pixels[from + 3];
    for (std::size_t channel = 0; channel < 3; ++channel) {
      const unsigned value = pixels[from + channel] * alpha + 255 * (255 - alpha);
      pixels[to++] = static_cast<std::uint8_t>((value + 127) / 255);
    }
  }
  pixels.resize(to);
}

}  // namespace

std::optional<Bitmap> PNGDecoder::bitmap(const Image &image) {
  const auto &file = image.file;
  if (file.size() < signatureLength || png_sig_cmp(file.data(), 0, signatureLength) != 0) {
    return std::nullopt;
  }
  Reader reader(file);
  if (!reader.readHeader()) {
    return std::nullopt;
  }
  std::vector<std::uint8_t> pixels(reader.width() * reader.height() * reader.channels());
  if (!reader.readPixels(pixels.data())) {
    return std::nullopt;
  }
  if (reader.channels() == 4) {
    layOnWhite(pixels);
  }
  return Bitmap{static_cast<int>(reader.width()), static_cast<int>(reader.height()), std::move(pixels)};
}

}  // namespace lumiwren
