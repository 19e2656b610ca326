#include "platform/linux/x11/DesktopCoordinates.h"

namespace lumiwren {

Point DesktopCoordinates::point(int x, int y) const {
  return {(x - primaryMonitor.x) / pixelsPerPoint,
          (primaryMonitor.y + primaryMonitor.height - y) / pixelsPerPoint};
}

Rect DesktopCoordinates::rect(const PixelRect &pixels) const {
  return {point(pixels.x, pixels.y + pixels.height),
          {pixels.width / pixelsPerPoint, pixels.height / pixelsPerPoint}};
}

}  // namespace lumiwren
