#include "platform/linux/screencapture/SizeLabel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>

namespace lumiwren {
namespace {

std::uint32_t pixel(const Sprite &sprite, int x, int y) {
  return sprite.pixels.at(static_cast<std::size_t>(y * sprite.width + x));
}

std::size_t light(const Sprite &sprite) {
  return static_cast<std::size_t>(std::count_if(sprite.pixels.begin(), sprite.pixels.end(),
                                                [](std::uint32_t value) { return (value & 0xff) > 200; }));
}

TEST(SizeLabel, EveryDigitLooksDifferent) {
  std::set<std::vector<std::uint32_t>> pictures;
  for (int digit = 1; digit <= 9; ++digit) {
    pictures.insert(sizeLabel(digit * 10, 1, 1).pixels);
    pictures.insert(sizeLabel(digit * 10 + digit, 1, 1).pixels);
  }
  EXPECT_EQ(pictures.size(), 18U);
}

TEST(SizeLabel, AllDigitsAreEquallyWide) {
  EXPECT_EQ(sizeLabel(111, 1111, 1).width, sizeLabel(888, 4000, 1).width);
  EXPECT_LT(sizeLabel(88, 111, 1).width, sizeLabel(111, 111, 1).width);
}

TEST(SizeLabel, GrowsWithTheScale) {
  const Sprite once = sizeLabel(640, 400, 1);
  const Sprite twice = sizeLabel(640, 400, 2);
  EXPECT_NEAR(twice.width, 2 * once.width, 2);
  EXPECT_NEAR(twice.height, 2 * once.height, 2);
  EXPECT_GT(light(twice), 3 * light(once));
}

TEST(SizeLabel, HasTextOnADarkRoundGround) {
  const Sprite label = sizeLabel(640, 400, 1);
  EXPECT_EQ(pixel(label, 0, 0) >> 24U, 0U) << "a corner";
  EXPECT_GT(pixel(label, 4, label.height / 2) >> 24U, 220U) << "the ground";
  EXPECT_LT(pixel(label, 4, label.height / 2) & 0xffU, 60U) << "the ground";
  EXPECT_GT(light(label), 50U);
  for (const std::uint32_t value : label.pixels) {
    EXPECT_LE(value & 0xffU, value >> 24U) << "premultiplied";
  }
}

TEST(SizeLabel, TheTextStandsInTheMiddle) {
  const Sprite label = sizeLabel(800, 800, 2);
  int left = label.width;
  int right = 0;
  int top = label.height;
  int bottom = 0;
  for (int y = 3; y < label.height - 3; ++y) {
    for (int x = 3; x < label.width - 3; ++x) {
      if ((pixel(label, x, y) & 0xffU) > 128) {
        left = std::min(left, x);
        right = std::max(right, x);
        top = std::min(top, y);
        bottom = std::max(bottom, y);
      }
    }
  }
  EXPECT_NEAR(left, label.width - 1 - right, 1);
  EXPECT_NEAR(top, label.height - 1 - bottom, 1);
}

constexpr PixelRect size{0, 0, 80, 20};
constexpr CaptureMonitor monitor{{100, 50, 1000, 700}, 1};

PixelRect placed(const PixelRect &drawn, PixelPoint corner) {
  const PixelPoint place = labelPlace(size, drawn, corner, monitor);
  return {place.x, place.y, size.width, size.height};
}

TEST(SizeLabel, IsBeyondTheCornerThatThePointerHas) {
  const PixelRect drawn{400, 300, 200, 100};
  for (const PixelPoint corner : {PixelPoint{599, 399}, {400, 300}, {599, 300}, {400, 399}}) {
    const PixelRect label = placed(drawn, corner);
    EXPECT_TRUE(isEmpty(intersection(label, drawn)));
    EXPECT_EQ(label.x > corner.x, corner.x == 599);
    EXPECT_EQ(label.y > corner.y, corner.y == 399);
  }
}

TEST(SizeLabel, NeverLeavesTheMonitorNorHidesThePointer) {
  for (int x = 100; x < 1100; x += 37) {
    for (int y = 50; y < 750; y += 31) {
      for (const PixelPoint anchor : {PixelPoint{100, 50}, {1099, 749}, {600, 400}, {100, 749}}) {
        const PixelRect drawn{std::min(x, anchor.x), std::min(y, anchor.y), std::abs(x - anchor.x) + 1,
                              std::abs(y - anchor.y) + 1};
        const PixelRect label = placed(drawn, {x, y});
        EXPECT_EQ(intersection(label, monitor.frame), label) << x << ", " << y;
        EXPECT_FALSE(contains(label, {x, y})) << x << ", " << y;
      }
    }
  }
}

TEST(SizeLabel, AtTheEdgeOfTheMonitorItStaysOutsideOfASmallRectangle) {
  const PixelRect drawn{1060, 720, 40, 30};
  EXPECT_TRUE(isEmpty(intersection(placed(drawn, {1099, 749}), drawn)));
}

TEST(SizeLabel, StaysNearThePointerWhenTheRectangleIsTheWholeMonitor) {
  const PixelRect label = placed(monitor.frame, {1099, 749});
  EXPECT_GT(label.x, 900);
  EXPECT_GT(label.y, 650);
}

}  // namespace
}  // namespace lumiwren
