#pragma once

#include "platform/linux/x11/MonitorLayout.h"

namespace lumiwren {

/// A monitor, and how much larger than at 96 dots per inch things are drawn on it.
struct CaptureMonitor {
  PixelRect frame;
  double scale = 1;
};

}  // namespace lumiwren
