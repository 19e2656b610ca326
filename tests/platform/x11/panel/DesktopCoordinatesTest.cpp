#include "platform/linux/x11/DesktopCoordinates.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

struct PlaceCase {
  DesktopCoordinates coordinates;
  PixelRect pixels;
  Rect expected;
};

TEST(DesktopCoordinates, HaveTheirOriginInTheBottomLeftCornerOfThePrimaryMonitorAndYUp) {
  const DesktopCoordinates single{{0, 0, 1280, 800}, 1};
  const DesktopCoordinates right{{1920, 100, 1280, 800}, 1};
  const DesktopCoordinates scaled{{0, 0, 2560, 1600}, 2};
  const PlaceCase cases[] = {
      {single, {0, 0, 1280, 800}, {{0, 0}, {1280, 800}}},
      {single, {10, 20, 400, 300}, {{10, 480}, {400, 300}}},
      {right, {1920, 100, 1280, 800}, {{0, 0}, {1280, 800}}},
      {right, {0, 0, 1920, 1080}, {{-1920, -180}, {1920, 1080}}},
      {scaled, {20, 40, 800, 600}, {{10, 480}, {400, 300}}},
  };
  for (const auto &[coordinates, pixels, expected] : cases) {
    EXPECT_EQ(coordinates.rect(pixels), expected);
  }
}

TEST(DesktopCoordinates, APointIsTheUpperLeftCornerOfItsPixel) {
  const DesktopCoordinates coordinates{{0, 0, 1280, 800}, 1};
  EXPECT_EQ(coordinates.point(0, 0), (Point{0, 800}));
  EXPECT_EQ(coordinates.point(1279, 799), (Point{1279, 1}));
}

}  // namespace
}  // namespace lumiwren
