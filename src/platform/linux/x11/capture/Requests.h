#pragma once

#include "platform/linux/x11/capture/PixelRegion.h"

#include <xcb/xcb.h>

#include <vector>

namespace lumiwren {

inline xcb_rectangle_t serverRectangle(const PixelRect &rect) {
  return {static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
          static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(rect.height)};
}

inline std::vector<xcb_rectangle_t> serverRectangles(const PixelRegion &region) {
  std::vector<xcb_rectangle_t> rectangles;
  rectangles.reserve(region.size());
  for (const PixelRect &rect : region) {
    rectangles.push_back(serverRectangle(rect));
  }
  return rectangles;
}

}  // namespace lumiwren
