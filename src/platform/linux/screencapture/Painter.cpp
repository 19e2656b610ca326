#include "platform/linux/screencapture/Painter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace lumiwren {
namespace {

double distanceToPiece(DrawPoint point, DrawPoint from, DrawPoint to) {
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  const double length = dx * dx + dy * dy;
  const double along =
      length == 0 ? 0 : std::clamp(((point.x - from.x) * dx + (point.y - from.y) * dy) / length, 0.0, 1.0);
  return std::hypot(point.x - from.x - along * dx, point.y - from.y - along * dy);
}

double distance(DrawPoint point, std::span<const Stroke> strokes) {
  double nearest = std::numeric_limits<double>::max();
  for (const Stroke &stroke : strokes) {
    for (std::size_t index = 1; index < stroke.size(); ++index) {
      nearest = std::min(nearest, distanceToPiece(point, stroke[index - 1], stroke[index]));
    }
  }
  return nearest;
}

DrawPoint middleOf(int column, int row) {
  return {column + 0.5, row + 0.5};
}

}  // namespace

Painter::Painter(int width, int height)
    : sprite_{.width = width,
              .height = height,
              .pixels = std::vector<std::uint32_t>(static_cast<std::size_t>(width) *
                                                   static_cast<std::size_t>(height))} {}

void Painter::lay(std::size_t index, const DrawColor &color, double coverage) {
  const double alpha = color.alpha * std::clamp(coverage, 0.0, 1.0);
  if (alpha == 0) {
    return;
  }
  const std::uint32_t below = sprite_.pixels[index];
  std::uint32_t result = 0;
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    const double source = (shift == 24U ? 255.0 : color.gray) * alpha;
    const double value = source + static_cast<double>(below >> shift & 0xffU) * (1 - alpha);
    result |= static_cast<std::uint32_t>(std::lround(value)) << shift;
  }
  sprite_.pixels[index] = result;
}

void Painter::strokes(std::span<const Stroke> strokes, double width, const DrawColor &color) {
  // Only what is near: a label has many strokes, each of them small.
  double left = std::numeric_limits<double>::max();
  double top = left;
  double right = std::numeric_limits<double>::lowest();
  double bottom = right;
  for (const Stroke &stroke : strokes) {
    for (const DrawPoint &point : stroke) {
      left = std::min(left, point.x);
      right = std::max(right, point.x);
      top = std::min(top, point.y);
      bottom = std::max(bottom, point.y);
    }
  }
  const auto first = [width](double edge) { return std::max(static_cast<int>(edge - width - 1), 0); };
  const auto last = [width](double edge, int size) {
    return std::min(static_cast<int>(edge + width + 2), size);
  };
  for (int row = first(top); row < last(bottom, sprite_.height); ++row) {
    for (int column = first(left); column < last(right, sprite_.width); ++column) {
      const auto index = static_cast<std::size_t>(row) * static_cast<std::size_t>(sprite_.width) +
                         static_cast<std::size_t>(column);
      lay(index, color, width / 2 + 0.5 - distance(middleOf(column, row), strokes));
    }
  }
}

void Painter::roundedRect(double inset, double radius, const DrawColor &color) {
  const double halfWidth = sprite_.width / 2.0;
  const double halfHeight = sprite_.height / 2.0;
  for (int row = 0; row < sprite_.height; ++row) {
    for (int column = 0; column < sprite_.width; ++column) {
      const DrawPoint point = middleOf(column, row);
      const double dx = std::abs(point.x - halfWidth) - (halfWidth - inset - radius);
      const double dy = std::abs(point.y - halfHeight) - (halfHeight - inset - radius);
      const double outside =
          std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) - radius;
      const auto index = static_cast<std::size_t>(row) * static_cast<std::size_t>(sprite_.width) +
                         static_cast<std::size_t>(column);
      lay(index, color, 0.5 - outside);
    }
  }
}

Stroke arc(DrawPoint middle, double radiusX, double radiusY, double from, double to) {
  constexpr double degreesPerPiece = 12;
  const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(to - from) / degreesPerPiece)));
  Stroke stroke;
  for (int piece = 0; piece <= pieces; ++piece) {
    const double angle = (from + (to - from) * piece / pieces) * std::numbers::pi / 180;
    stroke.push_back({middle.x + radiusX * std::cos(angle), middle.y + radiusY * std::sin(angle)});
  }
  return stroke;
}

}  // namespace lumiwren
