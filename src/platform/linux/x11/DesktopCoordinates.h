#pragma once

#include "platform/Geometry.h"

#include <xcb/xcb.h>

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

/// The primary monitor; the first one when none is marked so, the whole screen when there are no monitors.
/// Asks the server and waits for its answer.
PixelRect primaryMonitor(xcb_connection_t *connection, const xcb_screen_t *screen);

}  // namespace lumiwren
