#include "platform/linux/x11/capture/PixelFormat.h"

#include <algorithm>
#include <array>
#include <bit>

namespace lumiwren {
namespace {

constexpr int mostBits = 16;  // of a channel

bool isChannel(std::uint32_t mask) {
  const std::uint32_t low = mask == 0 ? 0 : mask >> std::countr_zero(mask);
  return mask != 0 && (low & (low + 1)) == 0 && std::popcount(mask) <= mostBits;
}

std::size_t bytesPerPixel(const PixelFormat &format) {
  return static_cast<std::size_t>(format.bitsPerPixel) / 8;
}

/// Where the byte of a channel is within its pixel, for channels that are a whole byte; else -1.
int byteOffset(std::uint32_t mask, const PixelFormat &format) {
  const int shift = std::countr_zero(mask);
  if (std::popcount(mask) != 8 || shift % 8 != 0) {
    return -1;
  }
  const int fromLeast = shift / 8;
  return format.mostSignificantByteFirst ? format.bitsPerPixel / 8 - 1 - fromLeast : fromLeast;
}

class Channel {
public:
  Channel(std::uint32_t mask, int sampleBits)
      : mask_(mask),
        shift_(std::countr_zero(mask)),
        highest_((std::uint64_t{1} << std::popcount(mask)) - 1),
        brightest_((std::uint64_t{1} << sampleBits) - 1) {}

  std::uint32_t sample(std::uint32_t pixel) const {
    const std::uint64_t value = (pixel & mask_) >> shift_;
    return static_cast<std::uint32_t>((value * brightest_ + highest_ / 2) / highest_);
  }

private:
  std::uint32_t mask_;
  int shift_;
  std::uint64_t highest_;
  std::uint64_t brightest_;
};

std::uint32_t pixelAt(const std::uint8_t *bytes, const PixelFormat &format) {
  const std::size_t count = bytesPerPixel(format);
  std::uint32_t pixel = 0;
  for (std::size_t index = 0; index < count; ++index) {
    const std::size_t place = format.mostSignificantByteFirst ? index : count - 1 - index;
    pixel = pixel << 8U | bytes[place];
  }
  return pixel;
}

}  // namespace

bool PixelFormat::isSupported() const {
  return (bitsPerPixel == 16 || bitsPerPixel == 24 || bitsPerPixel == 32) && isChannel(redMask) &&
         isChannel(greenMask) && isChannel(blueMask);
}

std::size_t PixelFormat::bytesPerRow(int width) const {
  const auto bits = static_cast<std::size_t>(width) * static_cast<std::size_t>(bitsPerPixel);
  const auto alignment = static_cast<std::size_t>(rowAlignment);
  return (bits + alignment - 1) / alignment * alignment / 8;
}

RGBImage rgbImage(std::span<const std::uint8_t> data, int width, int height, const PixelFormat &format) {
  const std::array masks{format.redMask, format.greenMask, format.blueMask};
  const bool deep =
      std::any_of(masks.begin(), masks.end(), [](std::uint32_t mask) { return std::popcount(mask) > 8; });
  RGBImage image{.width = width, .height = height, .bitsPerSample = deep ? 16 : 8, .samples = {}};
  const auto columns = static_cast<std::size_t>(width);
  image.samples.resize(columns * static_cast<std::size_t>(height) * (deep ? 6 : 3));
  std::uint8_t *out = image.samples.data();
  const std::size_t step = bytesPerPixel(format);
  const std::array offsets{byteOffset(masks[0], format), byteOffset(masks[1], format),
                           byteOffset(masks[2], format)};
  const bool plain = std::none_of(offsets.begin(), offsets.end(), [](int offset) { return offset < 0; });
  const std::array channels{Channel(masks[0], image.bitsPerSample), Channel(masks[1], image.bitsPerSample),
                            Channel(masks[2], image.bitsPerSample)};
  for (int row = 0; row < height; ++row) {
    const std::uint8_t *in = data.data() + static_cast<std::size_t>(row) * format.bytesPerRow(width);
    if (plain) {
      for (std::size_t column = 0; column < columns; ++column, in += step, out += 3) {
        out[0] = in[offsets[0]];
        out[1] = in[offsets[1]];
        out[2] = in[offsets[2]];
      }
      continue;
    }
    for (std::size_t column = 0; column < columns; ++column, in += step) {
      const std::uint32_t pixel = pixelAt(in, format);
      for (const Channel &channel : channels) {
        const std::uint32_t sample = channel.sample(pixel);
        if (deep) {
          *out++ = static_cast<std::uint8_t>(sample >> 8U);
        }
        *out++ = static_cast<std::uint8_t>(sample);
      }
    }
  }
  return image;
}

}  // namespace lumiwren
