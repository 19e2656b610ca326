#pragma once

#include "platform/linux/x11/capture/PixelRegion.h"

#include <optional>

namespace lumiwren {

/// The rectangle that the user is drawing: from the pixel where he pressed to the one where the pointer is,
/// both of them in it.
class RegionSelection {
public:
  /// A shorter way than this, in both directions, is a click. Pixels.
  static constexpr int shortestDrag = 3;

  RegionSelection(const PixelRect &bounds, PixelPoint pointer) : bounds_(bounds), pointer_(pointer) {}

  PixelPoint pointer() const { return pointer_; }
  void pointerMoved(PixelPoint pointer);
  void pressed();
  bool isPressed() const { return anchor_.has_value(); }
  /// While it is held the pointer moves the whole rectangle.
  void setHeld(bool held) { held_ = held; }

  /// Moves the rectangle, as far as there is room for all of it.
  void move(int dx, int dy);
  /// Moves the corner that the pointer has.
  void moveCorner(int dx, int dy);

  /// Nothing before there was a drag.
  std::optional<PixelRect> rectangle() const;
  /// The rectangle's corner that the pointer has.
  PixelPoint corner() const { return corner_; }
  /// Where it began; the pointer's place when nothing is drawn.
  PixelPoint anchor() const { return anchor_.value_or(pointer_); }

private:
  PixelRect bounds_;
  PixelPoint pointer_;
  std::optional<PixelPoint> anchor_;
  PixelPoint corner_;
  bool held_ = false;
};

}  // namespace lumiwren
