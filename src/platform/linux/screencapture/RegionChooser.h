#pragma once

#include "platform/linux/screencapture/RegionSelection.h"
#include "platform/linux/x11/capture/CaptureEvent.h"
#include "platform/linux/x11/capture/CaptureMonitor.h"
#include "platform/linux/x11/capture/CaptureScene.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace lumiwren {

/// How a user chooses a region of the screen, and what he sees of it.
///
/// A drag of the first button draws the rectangle, its end accepts it. Meanwhile arrow keys move the
/// rectangle by a pixel, with Shift its corner at the pointer, and the pointer moves it while Space is down;
/// Return accepts it. Before the drag, arrow keys move the pointer. Escape, the third button and a click
/// cancel.
class RegionChooser {
public:
  enum class Outcome : std::uint8_t { Open, Accepted, Cancelled };
  using MovePointer = std::function<void(int dx, int dy)>;

  /// `bounds` is the whole screen.
  RegionChooser(const PixelRect &bounds, std::vector<CaptureMonitor> monitors, PixelPoint pointer,
                MovePointer movePointer);

  Outcome handle(const CaptureEvent &event);
  /// The region that was accepted.
  PixelRect region() const { return selection_.rectangle().value(); }

  /// `drawsPointer`: whether the pointer is to be drawn, too.
  CaptureScene scene(bool drawsPointer) const;
  /// The pointer's shape, with its hot spot in the middle.
  const Sprite &cursor() const { return *cursor_; }

private:
  Outcome handleKey(const CaptureEvent &event);
  Outcome accepted() const;
  const CaptureMonitor &monitorAt(PixelPoint point) const;

  std::vector<CaptureMonitor> monitors_;
  RegionSelection selection_;
  MovePointer movePointer_;
  std::shared_ptr<const Sprite> cursor_;
};

}  // namespace lumiwren
