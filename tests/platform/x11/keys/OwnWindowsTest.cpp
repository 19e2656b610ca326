#include "platform/linux/x11/OwnWindows.h"

#include <gtest/gtest.h>

namespace lumiwren::testing {
namespace {

constexpr xcb_window_t ours = 100;
constexpr xcb_window_t alsoOurs = 101;
constexpr xcb_window_t theirs = 200;

xcb_focus_in_event_t focusEvent(xcb_window_t window, std::uint8_t detail,
                                std::uint8_t mode = XCB_NOTIFY_MODE_NORMAL) {
  xcb_focus_in_event_t event{};
  event.event = window;
  event.detail = detail;
  event.mode = mode;
  return event;
}

xcb_enter_notify_event_t crossing(xcb_window_t window, std::uint8_t detail) {
  xcb_enter_notify_event_t event{};
  event.event = window;
  event.detail = detail;
  return event;
}

class OwnWindowsTest : public ::testing::Test {
protected:
  OwnWindowsTest() {
    windows_.add(ours);
    windows_.add(alsoOurs);
  }
  OwnWindows windows_;
};

TEST_F(OwnWindowsTest, KeysBelongToTheWindowWithTheFocus) {
  EXPECT_FALSE(windows_.getKeys());
  windows_.focusIn(focusEvent(ours, XCB_NOTIFY_DETAIL_NONLINEAR));
  EXPECT_TRUE(windows_.getKeys());
  windows_.focusOut(focusEvent(ours, XCB_NOTIFY_DETAIL_NONLINEAR));
  windows_.focusIn(focusEvent(alsoOurs, XCB_NOTIFY_DETAIL_NONLINEAR));
  EXPECT_TRUE(windows_.getKeys());
  windows_.focusOut(focusEvent(alsoOurs, XCB_NOTIFY_DETAIL_NONLINEAR));
  EXPECT_FALSE(windows_.getKeys());
}

TEST_F(OwnWindowsTest, WhatIsToldToWindowsOnTheWayIsNoFocus) {
  windows_.focusIn(focusEvent(ours, XCB_NOTIFY_DETAIL_NONLINEAR_VIRTUAL));
  windows_.focusIn(focusEvent(ours, XCB_NOTIFY_DETAIL_VIRTUAL));
  windows_.focusIn(focusEvent(ours, XCB_NOTIFY_DETAIL_POINTER));
  EXPECT_FALSE(windows_.getKeys());
}

TEST_F(OwnWindowsTest, AGrabMovesTheKeysAndAFocusThatMovesMeanwhileDoesNot) {
  windows_.focusIn(focusEvent(ours, XCB_NOTIFY_DETAIL_NONLINEAR));
  windows_.focusOut(focusEvent(ours, XCB_NOTIFY_DETAIL_NONLINEAR, XCB_NOTIFY_MODE_GRAB));
  EXPECT_FALSE(windows_.getKeys());
  windows_.focusIn(focusEvent(alsoOurs, XCB_NOTIFY_DETAIL_NONLINEAR, XCB_NOTIFY_MODE_WHILE_GRABBED));
  EXPECT_FALSE(windows_.getKeys());
  windows_.focusIn(focusEvent(alsoOurs, XCB_NOTIFY_DETAIL_NONLINEAR, XCB_NOTIFY_MODE_UNGRAB));
  EXPECT_TRUE(windows_.getKeys());
}

TEST_F(OwnWindowsTest, WithoutAFocusTheKeysFollowThePointer) {
  windows_.setFocus(theirs);
  windows_.setPointerWindow(ours);
  EXPECT_FALSE(windows_.getKeys());
  windows_.focusIn(focusEvent(1, XCB_NOTIFY_DETAIL_POINTER_ROOT));
  EXPECT_TRUE(windows_.getKeys());
  windows_.pointerOut(crossing(ours, XCB_NOTIFY_DETAIL_NONLINEAR));
  EXPECT_FALSE(windows_.getKeys());
  windows_.pointerIn(crossing(ours, XCB_NOTIFY_DETAIL_ANCESTOR));
  EXPECT_TRUE(windows_.getKeys());
  windows_.focusOut(focusEvent(1, XCB_NOTIFY_DETAIL_POINTER_ROOT));
  EXPECT_FALSE(windows_.getKeys());
}

TEST_F(OwnWindowsTest, ButtonsBelongToTheWindowUnderThePointer) {
  windows_.pointerIn(crossing(ours, XCB_NOTIFY_DETAIL_NONLINEAR_VIRTUAL));
  EXPECT_FALSE(windows_.getButtons());
  windows_.pointerIn(crossing(ours, XCB_NOTIFY_DETAIL_NONLINEAR));
  EXPECT_TRUE(windows_.getButtons());
  windows_.pointerIn(crossing(alsoOurs, XCB_NOTIFY_DETAIL_ANCESTOR));
  windows_.pointerOut(crossing(ours, XCB_NOTIFY_DETAIL_INFERIOR));
  EXPECT_TRUE(windows_.getButtons());
}

TEST_F(OwnWindowsTest, AWindowThatGoesHasNeitherKeysNorPointer) {
  for (const bool isDestroyed : {false, true}) {
    windows_.setFocus(ours);
    windows_.setPointerWindow(ours);
    isDestroyed ? windows_.remove(ours) : windows_.leave(ours);
    EXPECT_FALSE(windows_.getKeys());
    EXPECT_FALSE(windows_.getButtons());
  }
  // Its number may be used again, by then for a window that is not known.
  windows_.setFocus(ours);
  EXPECT_FALSE(windows_.getKeys());
}

}  // namespace
}  // namespace lumiwren::testing
