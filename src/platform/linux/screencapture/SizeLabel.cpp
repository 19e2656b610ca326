#include "platform/linux/screencapture/SizeLabel.h"

#include "platform/linux/screencapture/Painter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>

namespace lumiwren {
namespace {

// All measures are in units of a pixel at scale 1. Digits are drawn with a pen of `pen` along lines in a box
// of `digitWidth` x `digitHeight`; all have the same width, so that a growing number does not shake.
constexpr double pen = 1.3;
constexpr double digitWidth = 5;
constexpr double digitHeight = 8;
constexpr double advance = 7.6;
constexpr double crossAdvance = 12.5;  // of the ×, with the spaces around it
constexpr double paddingX = 8;
constexpr double paddingY = 6.5;
constexpr double cornerRadius = 6;
constexpr double gapToPointer = 14;
constexpr double gapToEdge = 6;

using Strokes = std::vector<Stroke>;

Stroke joined(Stroke one, const Stroke &other) {
  one.insert(one.end(), other.begin(), other.end());
  return one;
}

Strokes digit(char character) {
  constexpr double w = digitWidth;
  constexpr double h = digitHeight;
  switch (character) {
    case '0':
      return {arc({w / 2, h / 2}, w / 2, h / 2, 0, 360)};
    case '1':
      return {{{0.7, 1.9}, {2.8, 0}, {2.8, h}}};
    case '2':
      return {joined(arc({2.45, 2.4}, 2.4, 2.4, 195, 395), {{0.1, h}, {w, h}})};
    case '3':
      return {joined(arc({2.4, 2.1}, 2.2, 2.1, 205, 440), arc({2.4, 5.8}, 2.5, 2.2, 275, 515))};
    case '4':
      return {{{3.8, h}, {3.8, 0}, {0, 5.6}, {w, 5.6}}};
    case '5':
      return {joined({{4.5, 0}, {0.8, 0}, {0.5, 3.7}}, arc({2.35, 5.35}, 2.6, 2.65, 222, 508))};
    case '6':
      return {arc({w / 2, 5.4}, w / 2, 2.6, 0, 360), joined({{4.0, 0}}, arc({5.2, 5.4}, 5.2, 5.4, 245, 180))};
    case '7':
      return {{{0, 0}, {w, 0}, {1.7, h}}};
    case '8':
      return {arc({w / 2, 2.0}, 2.1, 2.0, 0, 360), arc({w / 2, 5.9}, 2.5, 2.1, 0, 360)};
    default:
      return {arc({w / 2, 2.6}, w / 2, 2.6, 0, 360), joined({{1.0, h}}, arc({-0.2, 2.6}, 5.2, 5.4, 65, 0))};
  }
}

Strokes cross() {
  constexpr double arm = 2.1;
  constexpr double x = digitWidth / 2;
  constexpr double y = digitHeight / 2 + 0.5;
  return {{{x - arm, y - arm}, {x + arm, y + arm}}, {{x - arm, y + arm}, {x + arm, y - arm}}};
}

int whole(double value) {
  return static_cast<int>(std::lround(value));
}

}  // namespace

Sprite sizeLabel(int width, int height, double scale) {
  const std::string first = std::to_string(width);
  const std::string second = std::to_string(height);
  const auto digits = static_cast<double>(first.size() + second.size());
  // The last digit has no gap behind it.
  const double text = digits * advance + crossAdvance - (advance - digitWidth);
  Painter painter(whole((text + 2 * paddingX) * scale), whole((digitHeight + 2 * paddingY) * scale));
  // A light rim keeps the label apart from a dark ground.
  painter.roundedRect(0, cornerRadius * scale, {255, 0.22});
  painter.roundedRect(std::floor(scale), (cornerRadius - 1) * scale, {24, 0.9});
  double x = paddingX;
  const auto draw = [&](Strokes glyph, const DrawColor &color) {
    for (Stroke &stroke : glyph) {
      for (DrawPoint &point : stroke) {
        // Half a pixel: level lines then fill a row of pixels rather than two by half.
        point = {(x + point.x) * scale, (paddingY + point.y) * scale};
      }
    }
    painter.strokes(glyph, pen * scale, color);
  };
  for (const char character : first) {
    draw(digit(character), {255, 1});
    x += advance;
  }
  const double space = (crossAdvance - digitWidth - (advance - digitWidth)) / 2;
  x += space;
  draw(cross(), {255, 0.7});
  x += crossAdvance - space;
  for (const char character : second) {
    draw(digit(character), {255, 1});
    x += advance;
  }
  return painter.sprite();
}

PixelPoint labelPlace(const PixelRect &size, const PixelRect &drawn, PixelPoint corner,
                      const CaptureMonitor &monitor) {
  const int gap = whole(gapToPointer * monitor.scale);
  // Three places on each axis, best first: beyond the corner, beyond the opposite edge, inside.
  const auto places = [gap](int at, int low, int high, int extent) {
    const bool cornerIsHigh = at - low > high - at;
    const int above = high + gap;
    const int below = low - gap - extent;
    const int inside = cornerIsHigh ? at - gap - extent : at + gap;
    return cornerIsHigh ? std::array{above, inside, below} : std::array{below, inside, above};
  };
  const int right = drawn.x + drawn.width - 1;
  const int bottom = drawn.y + drawn.height - 1;
  const PixelRect &frame = monitor.frame;
  const int margin = whole(gapToEdge * monitor.scale);
  const auto keptInside = [margin](int place, int extent, int start, int room) {
    return std::max(start + margin, std::min(place, start + room - margin - extent));
  };
  PixelPoint best;
  long leastCost = std::numeric_limits<long>::max();
  for (const int y : places(corner.y, drawn.y, bottom, size.height)) {
    for (const int x : places(corner.x, drawn.x, right, size.width)) {
      const PixelPoint place{keptInside(x, size.width, frame.x, frame.width),
                             keptInside(y, size.height, frame.y, frame.height)};
      const PixelRect label{place.x, place.y, size.width, size.height};
      const PixelRect covered = intersection(label, drawn);
      const long away =
          std::abs(place.x + size.width / 2 - corner.x) + std::abs(place.y + size.height / 2 - corner.y);
      // The pointer itself must be seen; a covered column of the rectangle weighs as much as four of
      // distance.
      const PixelRect around{label.x - gap / 2, label.y - gap / 2, label.width + gap, label.height + gap};
      const long cost = (contains(around, corner) ? 1'000'000L : 0L) + away +
                        4L * covered.width * covered.height / std::max(size.height, 1);
      if (cost < leastCost) {
        leastCost = cost;
        best = place;
      }
    }
  }
  return best;
}

}  // namespace lumiwren
