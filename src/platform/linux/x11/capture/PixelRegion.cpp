#include "platform/linux/x11/capture/PixelRegion.h"

namespace lumiwren {
namespace {

void addUnlessEmpty(PixelRegion &region, const PixelRect &rect) {
  if (!isEmpty(rect)) {
    region.push_back(rect);
  }
}

}  // namespace

bool isEmpty(const PixelRect &rect) {
  return rect.width <= 0 || rect.height <= 0;
}

bool contains(const PixelRect &rect, PixelPoint point) {
  return point.x >= rect.x && point.y >= rect.y && point.x < rect.x + rect.width &&
         point.y < rect.y + rect.height;
}

PixelRegion subtracted(const PixelRegion &region, const PixelRect &rect) {
  PixelRegion rest;
  for (const PixelRect &part : region) {
    const PixelRect hole = intersection(part, rect);
    if (isEmpty(hole)) {
      rest.push_back(part);
      continue;
    }
    const int partRight = part.x + part.width;
    const int partBottom = part.y + part.height;
    const int holeRight = hole.x + hole.width;
    const int holeBottom = hole.y + hole.height;
    addUnlessEmpty(rest, {part.x, part.y, part.width, hole.y - part.y});
    addUnlessEmpty(rest, {part.x, hole.y, hole.x - part.x, hole.height});
    addUnlessEmpty(rest, {holeRight, hole.y, partRight - holeRight, hole.height});
    addUnlessEmpty(rest, {part.x, holeBottom, part.width, partBottom - holeBottom});
  }
  return rest;
}

PixelRegion united(PixelRegion region, const PixelRect &rect) {
  PixelRegion added;
  addUnlessEmpty(added, rect);
  for (const PixelRect &part : region) {
    added = subtracted(added, part);
  }
  region.insert(region.end(), added.begin(), added.end());
  return region;
}

PixelRegion clipped(const PixelRegion &region, const PixelRect &rect) {
  PixelRegion inside;
  for (const PixelRect &part : region) {
    addUnlessEmpty(inside, intersection(part, rect));
  }
  return inside;
}

}  // namespace lumiwren
