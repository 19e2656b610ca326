#pragma once

#include "platform/linux/x11/capture/CaptureMonitor.h"
#include "platform/linux/x11/capture/PixelRegion.h"
#include "platform/linux/x11/capture/Sprite.h"

namespace lumiwren {

/// A small dark label with a size in pixels, such as "640 × 400". The digits are drawn here: this program is
/// too short-lived to load fonts.
Sprite sizeLabel(int width, int height, double scale);

/// Where a label of `size` (whose place is ignored) goes: near `corner` of the rectangle `drawn`, wholly on
/// the monitor, and covering as little of the rectangle as it can.
PixelPoint labelPlace(const PixelRect &size, const PixelRect &drawn, PixelPoint corner,
                      const CaptureMonitor &monitor);

}  // namespace lumiwren
