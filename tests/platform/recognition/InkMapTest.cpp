#include "platform/linux/recognition/InkMap.h"

#include "base/Task.h"
#include "platform/recognition/Bitmaps.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

using namespace testing;

/// Something like a letter: a ring three pixels high and wide.
void ring(Bitmap &bitmap, int x, int y, const Color &ink) {
  fill(bitmap, x, y, 3, 1, ink);
  fill(bitmap, x, y + 2, 3, 1, ink);
  fill(bitmap, x, y + 1, 1, 1, ink);
  fill(bitmap, x + 2, y + 1, 1, 1, ink);
}

int shade(const GreyImage &map, int x, int y) {
  return map.pixels[map.at(x, y)];
}

struct Look {
  const char *name;
  Color ground, ink;
};

class InkMapLooks : public ::testing::TestWithParam<Look> {};

TEST_P(InkMapLooks, AreBlackOnWhite) {
  Bitmap bitmap = plainBitmap(60, 30, GetParam().ground);
  ring(bitmap, 20, 10, GetParam().ink);
  const auto map = inkMap(bitmap, {});
  ASSERT_TRUE(map);
  EXPECT_EQ(map->width, 60);
  EXPECT_EQ(map->height, 30);
  EXPECT_EQ(shade(*map, 0, 0), 255);
  EXPECT_LE(shade(*map, 20, 10), 90);
  EXPECT_EQ(shade(*map, 21, 11), 255) << "inside of the ring";
}

INSTANTIATE_TEST_SUITE_P(All, InkMapLooks,
                         ::testing::Values(Look{"Light", white, black},
                                           Look{"Dark", {30, 30, 30}, {212, 212, 212}},
                                           Look{"Faint", white, {150, 150, 150}},
                                           Look{"SameBrightness", {160, 32, 32}, {32, 96, 96}},
                                           Look{"RedOnBlue", {16, 24, 96}, {255, 80, 64}}),
                         [](const auto &instance) { return std::string(instance.param.name); });

TEST(InkMap, SeesBothSchemesInOnePicture) {
  Bitmap bitmap = plainBitmap(120, 60, white);
  fill(bitmap, 60, 0, 60, 60, {20, 20, 40});
  ring(bitmap, 20, 20, black);
  ring(bitmap, 90, 20, white);
  const auto map = inkMap(bitmap, {});
  ASSERT_TRUE(map);
  EXPECT_EQ(shade(*map, 20, 20), 0);
  EXPECT_EQ(shade(*map, 90, 20), 0);
  EXPECT_EQ(shade(*map, 59, 40), 255);
  EXPECT_EQ(shade(*map, 60, 40), 255);
}

TEST(InkMap, FollowsShadedGround) {
  Bitmap bitmap = plainBitmap(60, 60, white);
  for (int y = 0; y < 60; ++y) {
    const auto value = static_cast<std::uint8_t>(40 + 2 * y);
    fill(bitmap, 0, y, 60, 1, {value, value, value});
  }
  ring(bitmap, 20, 30, white);
  const auto map = inkMap(bitmap, {});
  ASSERT_TRUE(map);
  EXPECT_LE(shade(*map, 20, 30), 20);
  for (const int y : {0, 20, 31, 59}) {
    EXPECT_EQ(shade(*map, 40, y), 255) << y;
  }
}

TEST(InkMap, LeavesOutFramesRulesAndSeams) {
  Bitmap bitmap = plainBitmap(160, 80, white);
  fill(bitmap, 0, 4, 160, 1, black);
  fill(bitmap, 10, 20, 100, 40, {120, 120, 120});
  fill(bitmap, 11, 21, 98, 38, white);
  fill(bitmap, 120, 20, 1, 50, black);
  ring(bitmap, 50, 38, black);
  const auto map = inkMap(bitmap, {});
  ASSERT_TRUE(map);
  for (const auto &[x, y] : {std::pair(50, 4), std::pair(10, 30), std::pair(60, 20), std::pair(120, 40)}) {
    EXPECT_EQ(shade(*map, x, y), 255) << x << ' ' << y;
  }
  EXPECT_EQ(shade(*map, 50, 38), 0);
}

TEST(InkMap, HasNothingToGoByInNoise) {
  EXPECT_FALSE(inkMap(noise(200, 100), {}));
}

TEST(InkMap, EndsWhenItIsStopped) {
  std::stop_source stop;
  stop.request_stop();
  EXPECT_THROW(inkMap(plainBitmap(10, 10, white), stop.get_token()), CancellationError);
}

}  // namespace
}  // namespace lumiwren
