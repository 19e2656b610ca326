#include "platform/linux/screencapture/RegionSelection.h"

#include <algorithm>
#include <cstdlib>

namespace lumiwren {
namespace {

PixelPoint within(const PixelRect &bounds, PixelPoint point) {
  return {std::clamp(point.x, bounds.x, bounds.x + bounds.width - 1),
          std::clamp(point.y, bounds.y, bounds.y + bounds.height - 1)};
}

}  // namespace

void RegionSelection::pointerMoved(PixelPoint pointer) {
  const int dx = pointer.x - pointer_.x;
  const int dy = pointer.y - pointer_.y;
  pointer_ = pointer;
  if (held_) {
    move(dx, dy);
  } else {
    moveCorner(dx, dy);
  }
}

void RegionSelection::pressed() {
  anchor_ = corner_ = within(bounds_, pointer_);
}

void RegionSelection::move(int dx, int dy) {
  if (!anchor_) {
    return;
  }
  const auto [left, right] = std::minmax(anchor_->x, corner_.x);
  const auto [top, bottom] = std::minmax(anchor_->y, corner_.y);
  dx = std::clamp(dx, bounds_.x - left, bounds_.x + bounds_.width - 1 - right);
  dy = std::clamp(dy, bounds_.y - top, bounds_.y + bounds_.height - 1 - bottom);
  anchor_ = PixelPoint{anchor_->x + dx, anchor_->y + dy};
  corner_ = {corner_.x + dx, corner_.y + dy};
}

void RegionSelection::moveCorner(int dx, int dy) {
  corner_ = within(bounds_, {corner_.x + dx, corner_.y + dy});
}

std::optional<PixelRect> RegionSelection::rectangle() const {
  if (!anchor_) {
    return std::nullopt;
  }
  const int width = std::abs(corner_.x - anchor_->x);
  const int height = std::abs(corner_.y - anchor_->y);
  if (width < shortestDrag && height < shortestDrag) {
    return std::nullopt;
  }
  return PixelRect{std::min(corner_.x, anchor_->x), std::min(corner_.y, anchor_->y), width + 1, height + 1};
}

}  // namespace lumiwren
