#include "platform/linux/x11/capture/PixelFormat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

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

/// All pixels but the last, of the layout that nearly every screen has: four bytes that begin with blue,
/// green and red. Each is written as four bytes, of which the next pixel takes the last one. Returns their
/// number.
std::size_t convertCommon(const std::uint8_t *in, std::uint8_t *out, std::size_t pixels) {
  // The pixels come from the cache of the server's processor. Unrolled, the loop waits for several lines of
  // it at once, and takes half the time.
#pragma GCC unroll 16
  for (std::size_t pixel = 1; pixel < pixels; ++pixel, in += 4, out += 3) {
    std::uint32_t color = 0;
    std::memcpy(&color, in, sizeof color);
    color = __builtin_bswap32(color) >> 8U;
    std::memcpy(out, &color, sizeof color);
  }
  return pixels - 1;
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

int PixelFormat::bitsPerSample() const {
  return std::max({std::popcount(redMask), std::popcount(greenMask), std::popcount(blueMask)}) > 8 ? 16 : 8;
}

std::size_t PixelFormat::samplesPerRow(int width) const {
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(bitsPerSample()) / 8 * 3;
}

void PixelFormat::rgbRow(std::span<const std::uint8_t> pixels, std::span<std::uint8_t> samples) const {
  const std::size_t step = bytesPerPixel(*this);
  const std::uint8_t *in = pixels.data();
  std::uint8_t *out = samples.data();
  const std::uint8_t *const end = out + samples.size();
  const int red = byteOffset(redMask, *this);
  const int green = byteOffset(greenMask, *this);
  const int blue = byteOffset(blueMask, *this);
  if (red >= 0 && green >= 0 && blue >= 0) {
    if (std::endian::native == std::endian::little && step == 4 && red == 2 && green == 1 && blue == 0 &&
        out != end) {
      const std::size_t done = convertCommon(in, out, samples.size() / 3);
      in += done * step;
      out += done * 3;
    }
    for (; out != end; in += step, out += 3) {
      out[0] = in[red];
      out[1] = in[green];
      out[2] = in[blue];
    }
    return;
  }
  const bool deep = bitsPerSample() == 16;
  const std::array channels{Channel(redMask, bitsPerSample()), Channel(greenMask, bitsPerSample()),
                            Channel(blueMask, bitsPerSample())};
  for (; out != end; in += step) {
    const std::uint32_t pixel = pixelAt(in, *this);
    for (const Channel &channel : channels) {
      const std::uint32_t sample = channel.sample(pixel);
      if (deep) {
        *out++ = static_cast<std::uint8_t>(sample >> 8U);
      }
      *out++ = static_cast<std::uint8_t>(sample);
    }
  }
}

}  // namespace lumiwren
