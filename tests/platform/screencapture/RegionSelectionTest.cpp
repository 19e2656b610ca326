#include "platform/linux/screencapture/RegionSelection.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

constexpr PixelRect screen{0, 0, 100, 80};

RegionSelection drag(PixelPoint from, PixelPoint to) {
  RegionSelection selection(screen, from);
  selection.pressed();
  selection.pointerMoved(to);
  return selection;
}

TEST(RegionSelection, BothEndsOfTheDragAreInIt) {
  EXPECT_EQ(drag({10, 20}, {30, 25}).rectangle(), (PixelRect{10, 20, 21, 6}));
  EXPECT_EQ(drag({30, 25}, {10, 20}).rectangle(), (PixelRect{10, 20, 21, 6}));
  EXPECT_EQ(drag({30, 20}, {10, 25}).rectangle(), (PixelRect{10, 20, 21, 6}));
}

TEST(RegionSelection, TheWholeScreenCanBeDrawn) {
  EXPECT_EQ(drag({0, 0}, {99, 79}).rectangle(), screen);
}

TEST(RegionSelection, AClickIsNoRectangle) {
  EXPECT_EQ(drag({10, 20}, {10, 20}).rectangle(), std::nullopt);
  EXPECT_EQ(drag({10, 20}, {12, 18}).rectangle(), std::nullopt);
  EXPECT_EQ(drag({10, 20}, {13, 20}).rectangle(), (PixelRect{10, 20, 4, 1}));
  EXPECT_EQ(drag({10, 20}, {10, 23}).rectangle(), (PixelRect{10, 20, 1, 4}));
}

TEST(RegionSelection, ThereIsNothingBeforeThePress) {
  RegionSelection selection(screen, {5, 5});
  selection.pointerMoved({50, 50});
  selection.move(1, 1);
  EXPECT_FALSE(selection.isPressed());
  EXPECT_EQ(selection.rectangle(), std::nullopt);
  EXPECT_EQ(selection.pointer(), (PixelPoint{50, 50}));
}

TEST(RegionSelection, IsMovedAsFarAsThereIsRoom) {
  auto selection = drag({10, 20}, {19, 29});
  selection.move(1, -1);
  EXPECT_EQ(selection.rectangle(), (PixelRect{11, 19, 10, 10}));
  selection.move(-50, -50);
  EXPECT_EQ(selection.rectangle(), (PixelRect{0, 0, 10, 10}));
  selection.move(500, 500);
  EXPECT_EQ(selection.rectangle(), (PixelRect{90, 70, 10, 10}));
}

TEST(RegionSelection, ItsCornerIsMovedWithinTheScreen) {
  auto selection = drag({10, 20}, {19, 29});
  selection.moveCorner(1, -2);
  EXPECT_EQ(selection.rectangle(), (PixelRect{10, 20, 11, 8}));
  selection.moveCorner(-300, -300);
  EXPECT_EQ(selection.rectangle(), (PixelRect{0, 0, 11, 21}));
}

TEST(RegionSelection, ACorrectionStaysWhenThePointerMovesOn) {
  auto selection = drag({10, 20}, {19, 29});
  selection.move(2, 0);
  selection.moveCorner(0, 1);
  selection.pointerMoved({29, 39});
  EXPECT_EQ(selection.rectangle(), (PixelRect{12, 20, 20, 21}));
}

TEST(RegionSelection, WhileHeldThePointerMovesAllOfIt) {
  auto selection = drag({10, 20}, {19, 29});
  selection.setHeld(true);
  selection.pointerMoved({29, 30});
  EXPECT_EQ(selection.rectangle(), (PixelRect{20, 21, 10, 10}));
  selection.setHeld(false);
  selection.pointerMoved({30, 30});
  EXPECT_EQ(selection.rectangle(), (PixelRect{20, 21, 11, 10}));
}

}  // namespace
}  // namespace lumiwren
