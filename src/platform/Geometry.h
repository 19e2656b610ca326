#pragma once

namespace lumiwren {

/// Positions and sizes in points (device-independent pixels). Positions on the desktop have their origin in
/// the bottom-left corner of the primary screen, y up.
struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point &, const Point &) = default;
};

struct Size {
  double width = 0;
  double height = 0;
  friend bool operator==(const Size &, const Size &) = default;
};

/// `origin` is the bottom-left corner.
struct Rect {
  Point origin;
  Size size;

  double minX() const { return origin.x; }
  double minY() const { return origin.y; }
  double maxX() const { return origin.x + size.width; }
  double maxY() const { return origin.y + size.height; }
  /// The left and bottom edges belong to the rectangle, the right and top edges do not.
  bool contains(Point point) const {
    return point.x >= minX() && point.x < maxX() && point.y >= minY() && point.y < maxY();
  }
  friend bool operator==(const Rect &, const Rect &) = default;
};

}  // namespace lumiwren
