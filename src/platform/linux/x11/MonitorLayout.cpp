#include "platform/linux/x11/MonitorLayout.h"

#include <algorithm>

namespace lumiwren {
namespace {

PixelRect fromEdges(int left, int top, int right, int bottom) {
  return {left, top, std::max(right - left, 0), std::max(bottom - top, 0)};
}

bool isEmpty(const PixelRect &rect) {
  return rect.width == 0 || rect.height == 0;
}

}  // namespace

PixelRect intersection(const PixelRect &one, const PixelRect &other) {
  return fromEdges(std::max(one.x, other.x), std::max(one.y, other.y),
                   std::min(one.x + one.width, other.x + other.width),
                   std::min(one.y + one.height, other.y + other.height));
}

PixelRect MonitorLayout::primary() const {
  return monitors.empty() ? screen : monitors[primaryIndex.value_or(0)];
}

PixelRect MonitorLayout::main(const std::optional<PixelRect> &focusedWindow) const {
  if (focusedWindow) {
    const PixelRect middle{focusedWindow->x + focusedWindow->width / 2,
                           focusedWindow->y + focusedWindow->height / 2, 1, 1};
    const auto found = std::find_if(monitors.begin(), monitors.end(), [&middle](const PixelRect &monitor) {
      return !isEmpty(intersection(monitor, middle));
    });
    if (found != monitors.end()) {
      return *found;
    }
  }
  return primary();
}

PixelRect MonitorLayout::visibleFrame(const PixelRect &monitor, const std::vector<Strut> &struts) const {
  const int screenRight = screen.x + screen.width;
  const int screenBottom = screen.y + screen.height;
  PixelRect visible = monitor;
  // The part of the monitor that lies between the given edges, if the strut's extent touches the monitor and
  // leaves something of it.
  const auto cut = [&](const PixelRect &reserved, const PixelRect &rest) {
    const bool concernsMonitor = !isEmpty(intersection(monitor, reserved));
    if (concernsMonitor && !isEmpty(intersection(monitor, rest))) {
      visible = intersection(visible, rest);
    }
  };
  for (const auto &strut : struts) {
    const auto value = [&strut](Strut::Value index) { return static_cast<int>(strut.values.at(index)); };
    const int left = screen.x + value(Strut::Left);
    const int right = screenRight - value(Strut::Right);
    const int top = screen.y + value(Strut::Top);
    const int bottom = screenBottom - value(Strut::Bottom);
    cut(fromEdges(screen.x, value(Strut::LeftStartY), left, value(Strut::LeftEndY) + 1),
        fromEdges(left, screen.y, screenRight, screenBottom));
    cut(fromEdges(right, value(Strut::RightStartY), screenRight, value(Strut::RightEndY) + 1),
        fromEdges(screen.x, screen.y, right, screenBottom));
    cut(fromEdges(value(Strut::TopStartX), screen.y, value(Strut::TopEndX) + 1, top),
        fromEdges(screen.x, top, screenRight, screenBottom));
    cut(fromEdges(value(Strut::BottomStartX), bottom, value(Strut::BottomEndX) + 1, screenBottom),
        fromEdges(screen.x, screen.y, screenRight, bottom));
  }
  return visible;
}

}  // namespace lumiwren
