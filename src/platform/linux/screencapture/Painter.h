#pragma once

#include "platform/linux/x11/capture/Sprite.h"

#include <cstdint>
#include <span>
#include <vector>

namespace lumiwren {

/// A place in a sprite, in pixels; the middle of the first one is at 0.5, 0.5.
struct DrawPoint {
  double x = 0;
  double y = 0;
};

/// A line without corners of its own width: the points are joined by straight pieces with round ends.
using Stroke = std::vector<DrawPoint>;

/// A colour that is not premultiplied.
struct DrawColor {
  std::uint8_t gray = 0;
  double alpha = 1;
};

/// Draws smooth shapes into a sprite, which is transparent at first.
class Painter {
public:
  Painter(int width, int height);

  void strokes(std::span<const Stroke> strokes, double width, const DrawColor &color);
  /// The whole sprite as a rectangle with round corners, less `inset` on every side.
  void roundedRect(double inset, double radius, const DrawColor &color);

  const Sprite &sprite() const { return sprite_; }

private:
  void lay(std::size_t index, const DrawColor &color, double coverage);

  Sprite sprite_;
};

/// Part of an ellipse as a stroke; degrees from the right, clockwise.
Stroke arc(DrawPoint middle, double radiusX, double radiusY, double from, double to);

}  // namespace lumiwren
