#include "platform/linux/screencapture/RegionChooser.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace lumiwren {
namespace {

using Kind = CaptureEvent::Kind;
using Outcome = RegionChooser::Outcome;

class RegionChooserTest : public ::testing::Test {
protected:
  Outcome act(Kind kind, std::uint32_t button = 0) {
    return chooser_.handle({.kind = kind, .pointer = pointer_, .button = button});
  }
  Outcome moveTo(int x, int y) {
    pointer_ = {x, y};
    return act(Kind::Motion);
  }
  Outcome key(KeySym symbol, bool shift = false) {
    return chooser_.handle({.kind = Kind::KeyDown, .pointer = pointer_, .key = symbol, .shift = shift});
  }
  void startDrag() {
    moveTo(100, 100);
    act(Kind::ButtonDown, 1);
    moveTo(149, 139);
  }
  /// The whole picture without what is drawn on top, pixel by pixel: whether it is dimmed.
  static bool covered(const CaptureScene &scene, PixelPoint point) {
    return std::any_of(scene.fills.begin(), scene.fills.end(),
                       [&](const auto &fill) { return contains(fill.rect, point); });
  }

  PixelPoint pointer_{20, 30};
  std::vector<PixelPoint> steps_;
  RegionChooser chooser_{
      {0, 0, 1280, 800}, {{{0, 0, 800, 800}, 1}, {{800, 0, 480, 800}, 2}}, pointer_, [this](int dx, int dy) {
        steps_.push_back({dx, dy});
      }};
};

TEST_F(RegionChooserTest, TheEndOfTheDragAcceptsTheRectangle) {
  startDrag();
  EXPECT_EQ(act(Kind::ButtonUp, 1), Outcome::Accepted);
  EXPECT_EQ(chooser_.region(), (PixelRect{100, 100, 50, 40}));
}

TEST_F(RegionChooserTest, AClickCancels) {
  act(Kind::ButtonDown, 1);
  EXPECT_EQ(act(Kind::ButtonUp, 1), Outcome::Cancelled);
}

TEST_F(RegionChooserTest, EscapeAndTheMenuButtonCancelBeforeAndDuringTheDrag) {
  EXPECT_EQ(key(keySym::escape), Outcome::Cancelled);
  EXPECT_EQ(act(Kind::ButtonDown, 3), Outcome::Cancelled);
  startDrag();
  EXPECT_EQ(key(keySym::escape), Outcome::Cancelled);
  EXPECT_EQ(act(Kind::ButtonDown, 3), Outcome::Cancelled);
}

TEST_F(RegionChooserTest, OtherButtonsDoNothing) {
  for (const std::uint32_t button : {2U, 4U, 5U, 8U}) {
    EXPECT_EQ(act(Kind::ButtonDown, button), Outcome::Open);
    EXPECT_EQ(act(Kind::ButtonUp, button), Outcome::Open);
  }
  // Of a press that was made before this program had the pointer.
  EXPECT_EQ(act(Kind::ButtonUp, 1), Outcome::Open);
}

TEST_F(RegionChooserTest, ReturnAcceptsWhatIsDrawn) {
  EXPECT_EQ(key(keySym::enter), Outcome::Open);
  act(Kind::ButtonDown, 1);
  EXPECT_EQ(key(keySym::enter), Outcome::Open);
  moveTo(60, 60);
  EXPECT_EQ(key(keySym::keypadEnter), Outcome::Accepted);
  EXPECT_EQ(key(keySym::enter), Outcome::Accepted);
  EXPECT_EQ(chooser_.region(), (PixelRect{20, 30, 41, 31}));
}

TEST_F(RegionChooserTest, ArrowsMoveTheRectangleAndWithShiftItsCorner) {
  startDrag();
  key(keySym::right);
  key(keySym::keypadDown);
  EXPECT_EQ(chooser_.region(), (PixelRect{101, 101, 50, 40}));
  key(keySym::left, true);
  key(keySym::up, true);
  key(keySym::up, true);
  EXPECT_EQ(chooser_.region(), (PixelRect{101, 101, 49, 38}));
  EXPECT_TRUE(steps_.empty());
}

TEST_F(RegionChooserTest, ArrowsMoveThePointerBeforeTheDrag) {
  key(keySym::left);
  key(keySym::down, true);
  EXPECT_EQ(steps_, (std::vector<PixelPoint>{{-1, 0}, {0, 1}}));
}

TEST_F(RegionChooserTest, SpaceHoldsTheRectangle) {
  startDrag();
  key(keySym::space);
  moveTo(159, 129);
  EXPECT_EQ(chooser_.region(), (PixelRect{110, 90, 50, 40}));
  chooser_.handle({.kind = Kind::KeyUp, .pointer = pointer_, .key = keySym::space});
  moveTo(160, 129);
  EXPECT_EQ(chooser_.region(), (PixelRect{110, 90, 51, 40}));
}

TEST_F(RegionChooserTest, LinesCrossOnThePointersMonitorOnly) {
  const CaptureScene scene = chooser_.scene(false);
  EXPECT_EQ(scene.bright, PixelRect{});
  EXPECT_TRUE(covered(scene, {400, 30}));
  EXPECT_TRUE(covered(scene, {20, 600}));
  EXPECT_FALSE(covered(scene, {900, 30}));
  EXPECT_FALSE(covered(scene, pointer_)) << "the pointer's own middle stays free";
  for (const auto &one : scene.fills) {
    for (const auto &other : scene.fills) {
      EXPECT_TRUE(&one == &other || isEmpty(intersection(one.rect, other.rect)));
    }
  }
}

TEST_F(RegionChooserTest, NothingLiesOnTheRegionButTheOutlineAroundIt) {
  startDrag();
  const CaptureScene scene = chooser_.scene(false);
  EXPECT_EQ(scene.bright, (PixelRect{100, 100, 50, 40}));
  ASSERT_EQ(scene.sprites.size(), 1U);
  EXPECT_TRUE(isEmpty(intersection(scene.sprites[0].rect(), scene.bright)));
  for (const auto &fill : scene.fills) {
    EXPECT_TRUE(isEmpty(intersection(fill.rect, scene.bright)));
  }
  for (const PixelPoint around : {PixelPoint{99, 99}, PixelPoint{150, 99}, PixelPoint{99, 140},
                                  PixelPoint{150, 140}, PixelPoint{120, 99}}) {
    EXPECT_TRUE(covered(scene, around));
  }
  EXPECT_FALSE(covered(scene, {98, 98}));
}

TEST_F(RegionChooserTest, LinesAreAsWideAsTheMonitorsScale) {
  moveTo(900, 100);
  act(Kind::ButtonDown, 1);
  moveTo(1000, 200);
  const CaptureScene scene = chooser_.scene(false);
  EXPECT_TRUE(covered(scene, {898, 98}));
  EXPECT_FALSE(covered(scene, {897, 98}));
}

TEST_F(RegionChooserTest, ThePointerIsDrawnWhereItIsWhenItCannotBeMoved) {
  EXPECT_TRUE(chooser_.scene(false).sprites.empty());
  const CaptureScene scene = chooser_.scene(true);
  ASSERT_EQ(scene.sprites.size(), 1U);
  const PixelRect rect = scene.sprites[0].rect();
  EXPECT_EQ((PixelPoint{rect.x + rect.width / 2, rect.y + rect.height / 2}), pointer_);
  EXPECT_EQ(*scene.sprites[0].sprite, chooser_.cursor());
}

TEST_F(RegionChooserTest, ThePointersMiddleIsOpen) {
  const Sprite &cursor = chooser_.cursor();
  ASSERT_EQ(cursor.width % 2, 1);
  ASSERT_EQ(cursor.height, cursor.width);
  const auto middle = static_cast<std::size_t>(cursor.height / 2 * cursor.width + cursor.width / 2);
  EXPECT_EQ(cursor.pixels[middle], 0U);
  const auto left = static_cast<std::size_t>(cursor.height / 2 * cursor.width + cursor.width / 2 - 7);
  EXPECT_EQ(cursor.pixels[left], 0xffffffffU);
}

}  // namespace
}  // namespace lumiwren
