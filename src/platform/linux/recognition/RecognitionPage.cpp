#include "platform/linux/recognition/RecognitionPage.h"

#include "base/Task.h"
#include "platform/linux/recognition/InkMap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace lumiwren {
namespace {

/// Common letters are small for the engine. It takes time in proportion to their width, and reads narrow ones
/// as well as wide ones.
constexpr double enlargementDown = 2;
constexpr double enlargementAcross = 1.85;
constexpr int margin = 10;  // pixels; letters at the very edge are read badly
/// Letters that are this high, on screens of twice the density, need not be enlarged.
constexpr int largeLetters = 12;
/// Tesseract takes pictures of up to 32,767 pixels a side; memory for one of 30 million is enough.
constexpr int maximumSide = 32'000;
constexpr double maximumPixels = 30e6;

/// Brightness, turned round where the most frequent one is dark.
GreyImage darkOnLight(const Bitmap &bitmap) {
  GreyImage result{bitmap.width, bitmap.height, {}};
  result.pixels.reserve(bitmap.rgb.size() / 3);
  std::array<std::size_t, 256> histogram{};
  for (std::size_t at = 0; at < bitmap.rgb.size(); at += 3) {
    const int sum = bitmap.rgb[at] * 77 + bitmap.rgb[at + 1] * 150 + bitmap.rgb[at + 2] * 29;
    result.pixels.push_back(static_cast<std::uint8_t>(sum >> 8));
    ++histogram[result.pixels.back()];
  }
  if (std::max_element(histogram.begin(), histogram.end()) < histogram.begin() + 128) {
    for (auto &value : result.pixels) {
      value = static_cast<std::uint8_t>(255 - value);
    }
  }
  return result;
}

/// How one line of pixels becomes a longer one: cubic, so that strokes stay sharp.
class Enlargement {
public:
  Enlargement(int length, double factor) : last_(length - 1) {
    const int longer = static_cast<int>(std::lround(length * factor));
    taps_.reserve(static_cast<std::size_t>(longer));
    for (int place = 0; place < longer; ++place) {
      const double source = (place + 0.5) / factor - 0.5;
      const double left = std::floor(source);
      const double t = source - left;
      // The curve of Catmull and Rom.
      const std::array<double, 4> weights{((-0.5 * t + 1) * t - 0.5) * t, (1.5 * t - 2.5) * t * t + 1,
                                          ((-1.5 * t + 2) * t + 0.5) * t, (0.5 * t - 0.5) * t * t};
      Taps taps{static_cast<int>(left) - 1, {}};
      for (std::size_t tap = 0; tap < weights.size(); ++tap) {
        taps.weights[tap] = static_cast<int>(std::lround(weights[tap] * one));
      }
      taps_.push_back(taps);
    }
  }

  int length() const { return static_cast<int>(taps_.size()); }

  /// The pixels of a line are `step` bytes apart.
  void apply(const std::uint8_t *from, std::size_t fromStep, std::uint8_t *to, std::size_t toStep) const {
    for (const auto &taps : taps_) {
      int sum = one / 2;
      for (int tap = 0; tap < 4; ++tap) {
        const auto place = static_cast<std::size_t>(std::clamp(taps.first + tap, 0, last_));
        sum += taps.weights[static_cast<std::size_t>(tap)] * from[place * fromStep];
      }
      *to = static_cast<std::uint8_t>(std::clamp(sum / one, 0, 255));
      to += toStep;
    }
  }

private:
  static constexpr int one = 1024;

  struct Taps {
    int first;
    std::array<int, 4> weights;
  };

  int last_;
  std::vector<Taps> taps_;
};

GreyImage enlarged(const GreyImage &image, const std::stop_token &token) {
  const Enlargement across(image.width, enlargementAcross);
  const Enlargement down(image.height, enlargementDown);
  GreyImage wide{across.length(), image.height, {}};
  wide.pixels.resize(static_cast<std::size_t>(wide.width) * static_cast<std::size_t>(wide.height));
  for (int y = 0; y < image.height; ++y) {
    throwIfStopped(token);
    across.apply(&image.pixels[image.at(0, y)], 1, &wide.pixels[wide.at(0, y)], 1);
  }
  GreyImage result{wide.width, down.length(), {}};
  result.pixels.resize(static_cast<std::size_t>(result.width) * static_cast<std::size_t>(result.height));
  const auto step = static_cast<std::size_t>(wide.width);
  for (int x = 0; x < wide.width; ++x) {
    throwIfStopped(token);
    down.apply(&wide.pixels[wide.at(x, 0)], step, &result.pixels[result.at(x, 0)], step);
  }
  return result;
}

GreyImage framed(const GreyImage &image, std::uint8_t shade) {
  GreyImage result{image.width + 2 * margin, image.height + 2 * margin, {}};
  result.pixels.assign(static_cast<std::size_t>(result.width) * static_cast<std::size_t>(result.height),
                       shade);
  for (int y = 0; y < image.height; ++y) {
    std::copy_n(&image.pixels[image.at(0, y)], image.width, &result.pixels[result.at(margin, y + margin)]);
  }
  return result;
}

/// A box of the picture before it was enlarged and framed, with some room around it.
PixelBox placed(const PixelBox &box, double across, double down, int room, const GreyImage &image) {
  const auto first = [&](int place, double factor) {
    return std::max(0, static_cast<int>(std::floor(place * factor)) + margin - room);
  };
  const auto behind = [&](int place, double factor, int length) {
    return std::min(length, static_cast<int>(std::ceil(place * factor)) + margin + room);
  };
  return {first(box.left, across), first(box.top, down), behind(box.right, across, image.width),
          behind(box.bottom, down, image.height)};
}

}  // namespace

RecognitionPage recognitionPage(const Bitmap &bitmap, const std::stop_token &token) {
  RecognitionPage page;
  auto ink = inkMap(bitmap, token);
  page.isLaidOut = ink.has_value();
  auto layout = ink ? textLayout(*ink, token) : TextLayout();
  const GreyImage grey = ink ? std::move(*ink) : darkOnLight(bitmap);
  const bool isLarge = layout.letterHeight >= largeLetters ||
                       std::max(grey.width, grey.height) * 2 + 2 * margin > maximumSide ||
                       4.0 * grey.width * grey.height > maximumPixels;
  const double across = isLarge ? 1 : enlargementAcross;
  const double down = isLarge ? 1 : enlargementDown;
  page.image = framed(isLarge ? grey : enlarged(grey, token), page.isLaidOut ? 255 : grey.pixels.front());
  if (!page.isLaidOut) {
    const PixelBox everything{0, 0, page.image.width, page.image.height};
    page.blocks.push_back({everything, everything});
  }
  // Less than half of what is blank between blocks.
  const int room = std::min(margin, static_cast<int>(layout.letterHeight * down));
  for (const auto &block : layout.blocks) {
    page.blocks.push_back({placed(block.box, across, down, room, page.image),
                           placed(block.sample, across, down, 4, page.image)});
  }
  return page;
}

}  // namespace lumiwren
