#pragma once

#include "platform/linux/x11/MonitorLayout.h"

#include <vector>

namespace lumiwren {

/// A pixel of the X screen, y down.
struct PixelPoint {
  int x = 0;
  int y = 0;
  friend bool operator==(const PixelPoint &, const PixelPoint &) = default;
};

/// Pixels as rectangles that do not overlap and are not empty.
using PixelRegion = std::vector<PixelRect>;

bool isEmpty(const PixelRect &rect);
bool contains(const PixelRect &rect, PixelPoint point);

/// What of `region` is not in `rect`.
PixelRegion subtracted(const PixelRegion &region, const PixelRect &rect);
/// `region` and `rect` together.
PixelRegion united(PixelRegion region, const PixelRect &rect);
/// What of `region` is in `rect`.
PixelRegion clipped(const PixelRegion &region, const PixelRect &rect);

}  // namespace lumiwren
