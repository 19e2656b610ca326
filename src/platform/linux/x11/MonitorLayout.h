#pragma once

#include "platform/linux/x11/DesktopCoordinates.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace lumiwren {

/// What a panel or dock keeps free of windows: the values of _NET_WM_STRUT_PARTIAL, widths counted from the
/// edges of the whole X screen.
struct Strut {
  enum Value : std::uint8_t {
    Left,
    Right,
    Top,
    Bottom,
    LeftStartY,
    LeftEndY,
    RightStartY,
    RightEndY,
    TopStartX,
    TopEndX,
    BottomStartX,
    BottomEndX,
    Count
  };
  std::array<std::uint32_t, Count> values{};
};

/// The monitors of an X screen.
struct MonitorLayout {
  PixelRect screen;
  std::vector<PixelRect> monitors;
  std::optional<std::size_t> primaryIndex;

  /// The primary monitor; the first one when none is marked so, the whole screen when there are no monitors.
  PixelRect primary() const;
  /// The monitor that the middle of `focusedWindow` is on; the primary one when there is no such monitor or
  /// no such window.
  PixelRect main(const std::optional<PixelRect> &focusedWindow) const;
  /// What `struts` leave free of `monitor`. A strut that would leave nothing of it is meant for another
  /// monitor farther from the edge.
  PixelRect visibleFrame(const PixelRect &monitor, const std::vector<Strut> &struts) const;
};

/// What is in both; without size where they do not meet.
PixelRect intersection(const PixelRect &one, const PixelRect &other);

}  // namespace lumiwren
