#include "platform/linux/x11/capture/PixelRegion.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

namespace lumiwren {
namespace {

/// The pixels of a region; fails when two of its rectangles overlap or one is empty.
std::set<std::pair<int, int>> pixels(const PixelRegion &region) {
  std::set<std::pair<int, int>> result;
  for (const PixelRect &part : region) {
    EXPECT_GT(part.width, 0);
    EXPECT_GT(part.height, 0);
    for (int y = part.y; y < part.y + part.height; ++y) {
      for (int x = part.x; x < part.x + part.width; ++x) {
        EXPECT_TRUE(result.insert({x, y}).second) << x << ", " << y << " is there twice";
      }
    }
  }
  return result;
}

constexpr PixelRect square{2, 2, 4, 4};
const PixelRect others[]{{0, 0, 8, 8}, {3, 3, 2, 2}, {0, 0, 3, 3}, {5, 5, 3, 3}, {0, 3, 8, 1},
                         {3, 0, 1, 8}, {2, 2, 4, 4}, {6, 2, 2, 4}, {0, 0, 0, 5}, {-3, -3, 7, 20}};

TEST(PixelRegion, WhatIsSubtractedIsGoneAndNothingElse) {
  for (const PixelRect &other : others) {
    auto expected = pixels({square});
    std::erase_if(expected, [&](const auto &pixel) { return contains(other, {pixel.first, pixel.second}); });
    EXPECT_EQ(pixels(subtracted({square}, other)), expected) << other.x << ", " << other.y;
  }
}

TEST(PixelRegion, AUnionHasEveryPixelOnce) {
  PixelRegion region;
  std::set<std::pair<int, int>> expected;
  for (const PixelRect &other : others) {
    region = united(std::move(region), other);
    for (int y = other.y; y < other.y + other.height; ++y) {
      for (int x = other.x; x < other.x + other.width; ++x) {
        expected.insert({x, y});
      }
    }
    EXPECT_EQ(pixels(region), expected);
  }
}

TEST(PixelRegion, ClippingLeavesWhatIsInBoth) {
  EXPECT_EQ(clipped({square, {10, 10, 5, 5}}, {0, 0, 3, 30}), (PixelRegion{{2, 2, 1, 4}}));
  EXPECT_EQ(clipped({square}, {6, 6, 3, 3}), PixelRegion{});
}

TEST(PixelRegion, TheRightAndBottomEdgesAreOutside) {
  EXPECT_TRUE(contains(square, {2, 2}));
  EXPECT_TRUE(contains(square, {5, 5}));
  EXPECT_FALSE(contains(square, {6, 5}));
  EXPECT_FALSE(contains(square, {5, 6}));
}

}  // namespace
}  // namespace lumiwren
