#include "platform/linux/x11/capture/CaptureScene.h"

#include <algorithm>

namespace lumiwren {
namespace {

const PixelRect &rectOf(const CaptureScene::Fill &fill) {
  return fill.rect;
}
PixelRect rectOf(const CaptureScene::PlacedSprite &sprite) {
  return sprite.rect();
}

template <typename Element>
void addMissing(PixelRegion &region, const std::vector<Element> &elements,
                const std::vector<Element> &others) {
  for (const Element &element : elements) {
    if (std::find(others.begin(), others.end(), element) == others.end()) {
      region = united(std::move(region), rectOf(element));
    }
  }
}

}  // namespace

PixelRegion changed(const CaptureScene &before, const CaptureScene &after) {
  PixelRegion region = subtracted(united({}, before.bright), after.bright);
  for (const PixelRect &part : subtracted(united({}, after.bright), before.bright)) {
    region.push_back(part);
  }
  addMissing(region, before.fills, after.fills);
  addMissing(region, after.fills, before.fills);
  addMissing(region, before.sprites, after.sprites);
  addMissing(region, after.sprites, before.sprites);
  return region;
}

}  // namespace lumiwren
