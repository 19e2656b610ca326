#pragma once

#include "platform/Geometry.h"

namespace lumiwren {

/// A rectangle of the X screen, in pixels, y down.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const PixelRect &, const PixelRect &) = default;
};

/// How the X screen's pixels become desktop coordinates (Geometry.h) and back.
struct DesktopCoordinates {
  PixelRect primaryMonitor;
  double pixelsPerPoint = 1;

  Point point(int x, int y) const;
  Rect rect(const PixelRect &pixels) const;
};

}  // namespace lumiwren
