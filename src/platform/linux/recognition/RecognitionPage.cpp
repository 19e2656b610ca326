#include "platform/linux/recognition/RecognitionPage.h"

#include "base/Task.h"
#include "platform/linux/recognition/InkMap.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace lumiwren {
namespace {

constexpr int margin = 10;  // pixels; letters at the very edge are read badly
/// Letters of twice the size of most screens' need not be enlarged.
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

/// Twice as wide, in rows that stand `stride` bytes apart while their pixels stand `step` apart; cubic, so
/// that strokes stay sharp.
void doubled(const std::uint8_t *from, int length, std::size_t fromStep, std::uint8_t *to,
             std::size_t toStep) {
  // A quarter of a pixel to either side: the weights of Catmull and Rom's curve, of 256.
  constexpr std::array<int, 4> weights{-6, 58, 222, -18};
  const auto at = [&](int place) {
    return static_cast<int>(from[static_cast<std::size_t>(std::clamp(place, 0, length - 1)) * fromStep]);
  };
  for (int place = 0; place < length; ++place) {
    int before = 128;
    int behind = 128;
    for (int tap = 0; tap < 4; ++tap) {
      before += weights[static_cast<std::size_t>(tap)] * at(place - 2 + tap);
      behind += weights[static_cast<std::size_t>(tap)] * at(place + 2 - tap);
    }
    to[static_cast<std::size_t>(place) * 2 * toStep] =
        static_cast<std::uint8_t>(std::clamp(before >> 8, 0, 255));
    to[(static_cast<std::size_t>(place) * 2 + 1) * toStep] =
        static_cast<std::uint8_t>(std::clamp(behind >> 8, 0, 255));
  }
}

GreyImage enlarged(const GreyImage &image) {
  GreyImage wide{image.width * 2, image.height, {}};
  wide.pixels.resize(image.pixels.size() * 2);
  for (int y = 0; y < image.height; ++y) {
    doubled(&image.pixels[image.at(0, y)], image.width, 1, &wide.pixels[wide.at(0, y)], 1);
  }
  GreyImage result{wide.width, image.height * 2, {}};
  result.pixels.resize(wide.pixels.size() * 2);
  const auto step = static_cast<std::size_t>(wide.width);
  for (int x = 0; x < wide.width; ++x) {
    doubled(&wide.pixels[wide.at(x, 0)], wide.height, step, &result.pixels[result.at(x, 0)], step);
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
PixelBox placed(const PixelBox &box, int scale, int room, const GreyImage &image) {
  return {std::max(0, box.left * scale + margin - room), std::max(0, box.top * scale + margin - room),
          std::min(image.width, box.right * scale + margin + room),
          std::min(image.height, box.bottom * scale + margin + room)};
}

}  // namespace

RecognitionPage recognitionPage(const Bitmap &bitmap, const std::stop_token &token) {
  RecognitionPage page;
  auto ink = inkMap(bitmap, token);
  page.isLaidOut = ink.has_value();
  auto layout = ink ? textLayout(*ink, token) : TextLayout();
  const GreyImage grey = ink ? std::move(*ink) : darkOnLight(bitmap);
  throwIfStopped(token);
  const bool isLarge = layout.letterHeight >= largeLetters ||
                       std::max(grey.width, grey.height) * 2 + 2 * margin > maximumSide ||
                       4.0 * grey.width * grey.height > maximumPixels;
  const int scale = isLarge ? 1 : 2;
  page.image = framed(isLarge ? grey : enlarged(grey), page.isLaidOut ? 255 : grey.pixels.front());
  throwIfStopped(token);
  if (!page.isLaidOut) {
    const PixelBox everything{0, 0, page.image.width, page.image.height};
    page.blocks.push_back({everything, everything});
  }
  // Less than half of what is blank between blocks.
  const int room = std::min(margin, layout.letterHeight * scale);
  for (const auto &block : layout.blocks) {
    page.blocks.push_back(
        {placed(block.box, scale, room, page.image), placed(block.sample, scale, 2 * scale, page.image)});
  }
  return page;
}

}  // namespace lumiwren
