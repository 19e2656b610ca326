#pragma once

#include "platform/linux/x11/capture/PixelRegion.h"
#include "platform/linux/x11/capture/Sprite.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace lumiwren {

/// What the overlay shows on top of the frozen screen: dimmed but for one rectangle, then areas of one
/// colour, then sprites, in their order.
struct CaptureScene {
  struct Fill {
    PixelRect rect;
    std::uint32_t color;  // premultiplied 0xAARRGGBB
    friend bool operator==(const Fill &, const Fill &) = default;
  };
  struct PlacedSprite {
    PixelPoint place;
    std::shared_ptr<const Sprite> sprite;
    PixelRect rect() const { return {place.x, place.y, sprite->width, sprite->height}; }
    friend bool operator==(const PlacedSprite &, const PlacedSprite &) = default;
  };

  PixelRect bright;
  std::vector<Fill> fills;
  std::vector<PlacedSprite> sprites;
};

/// Where the two look different, and perhaps a little more.
PixelRegion changed(const CaptureScene &before, const CaptureScene &after);

}  // namespace lumiwren
