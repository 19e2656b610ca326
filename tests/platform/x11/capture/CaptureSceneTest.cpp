#include "platform/linux/x11/capture/CaptureScene.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace lumiwren {
namespace {

int area(const PixelRegion &region) {
  int sum = 0;
  for (const PixelRect &part : region) {
    sum += part.width * part.height;
  }
  return sum;
}

TEST(CaptureScene, NothingChangesBetweenEqualScenes) {
  const CaptureScene scene{.bright = {1, 2, 30, 40}, .fills = {{{0, 0, 5, 1}, 0xff}}, .sprites = {}};
  EXPECT_EQ(changed(scene, scene), PixelRegion{});
}

TEST(CaptureScene, AGrowingRectangleChangesOnlyAtItsEdges) {
  const CaptureScene before{.bright = {100, 100, 1000, 800}, .fills = {}, .sprites = {}};
  CaptureScene after = before;
  after.bright.width += 3;
  after.bright.height += 2;
  EXPECT_EQ(area(changed(before, after)), 1003 * 802 - 1000 * 800);
  EXPECT_EQ(area(changed(after, before)), 1003 * 802 - 1000 * 800);
}

TEST(CaptureScene, WhatMovedChangesWhereItWasAndWhereItIs) {
  const auto sprite = std::make_shared<const Sprite>(Sprite{.width = 2, .height = 2, .pixels = {1, 2, 3, 4}});
  const CaptureScene before{
      .bright = {}, .fills = {{{0, 5, 20, 1}, 0xff}, {{0, 9, 20, 1}, 0xff}}, .sprites = {{{30, 30}, sprite}}};
  const CaptureScene after{
      .bright = {}, .fills = {{{0, 6, 20, 1}, 0xff}, {{0, 9, 20, 1}, 0xff}}, .sprites = {{{31, 30}, sprite}}};
  const PixelRegion region = changed(before, after);
  EXPECT_EQ(area(region), 40 + 6);
  EXPECT_TRUE(std::none_of(region.begin(), region.end(), [](const PixelRect &part) {
    return contains(part, {3, 9});
  }));
}

TEST(CaptureScene, AChangedColourIsAChange) {
  const CaptureScene before{.bright = {}, .fills = {{{0, 0, 5, 1}, 0xff}}, .sprites = {}};
  const CaptureScene after{.bright = {}, .fills = {{{0, 0, 5, 1}, 0xfe}}, .sprites = {}};
  EXPECT_EQ(area(changed(before, after)), 5);
}

}  // namespace
}  // namespace lumiwren
