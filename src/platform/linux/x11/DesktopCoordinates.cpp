#include "platform/linux/x11/DesktopCoordinates.h"

#include <xcb/randr.h>

#include <cstdlib>
#include <memory>

namespace lumiwren {

Point DesktopCoordinates::point(int x, int y) const {
  return {(x - primaryMonitor.x) / pixelsPerPoint,
          (primaryMonitor.y + primaryMonitor.height - y) / pixelsPerPoint};
}

Rect DesktopCoordinates::rect(const PixelRect &pixels) const {
  return {point(pixels.x, pixels.y + pixels.height),
          {pixels.width / pixelsPerPoint, pixels.height / pixelsPerPoint}};
}

PixelRect primaryMonitor(xcb_connection_t *connection, const xcb_screen_t *screen) {
  PixelRect result{0, 0, screen->width_in_pixels, screen->height_in_pixels};
  const std::unique_ptr<xcb_randr_get_monitors_reply_t, decltype(&std::free)> monitors(
      xcb_randr_get_monitors_reply(connection, xcb_randr_get_monitors(connection, screen->root, 1), nullptr),
      &std::free);
  if (!monitors) {
    return result;
  }
  bool isFirst = true;
  for (auto position = xcb_randr_get_monitors_monitors_iterator(monitors.get()); position.rem > 0;
       xcb_randr_monitor_info_next(&position)) {
    const auto &monitor = *position.data;
    if (isFirst || monitor.primary) {
      result = {monitor.x, monitor.y, monitor.width, monitor.height};
    }
    isFirst = false;
    if (monitor.primary) {
      break;
    }
  }
  return result;
}

}  // namespace lumiwren
