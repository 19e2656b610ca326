#include "platform/linux/x11/OwnWindows.h"

#include <cstdint>

namespace lumiwren {
namespace {

// Events with other details are told to windows that lie between the old and the new one.
bool concernsTheWindowItself(std::uint8_t detail) {
  return detail == XCB_NOTIFY_DETAIL_ANCESTOR || detail == XCB_NOTIFY_DETAIL_INFERIOR ||
         detail == XCB_NOTIFY_DETAIL_NONLINEAR;
}

}  // namespace

void OwnWindows::leave(xcb_window_t window) {
  if (focus_ == window) {
    focus_ = XCB_NONE;
  }
  if (pointerWindow_ == window) {
    pointerWindow_ = XCB_NONE;
  }
}

void OwnWindows::remove(xcb_window_t window) {
  leave(window);
  windows_.erase(window);
}

void OwnWindows::focusIn(const xcb_focus_in_event_t &event) {
  if (event.detail == XCB_NOTIFY_DETAIL_POINTER_ROOT) {
    focus_ = XCB_INPUT_FOCUS_POINTER_ROOT;
  } else if (event.mode != XCB_NOTIFY_MODE_WHILE_GRABBED && concernsTheWindowItself(event.detail) &&
             windows_.contains(event.event)) {
    focus_ = event.event;
  }
}

void OwnWindows::focusOut(const xcb_focus_out_event_t &event) {
  const bool endsPointerRoot =
      event.detail == XCB_NOTIFY_DETAIL_POINTER_ROOT && focus_ == XCB_INPUT_FOCUS_POINTER_ROOT;
  // While somebody holds a grab, the keys go there wherever the focus moves.
  if (endsPointerRoot || (event.mode != XCB_NOTIFY_MODE_WHILE_GRABBED &&
                          concernsTheWindowItself(event.detail) && event.event == focus_)) {
    focus_ = XCB_NONE;
  }
}

void OwnWindows::pointerIn(const xcb_enter_notify_event_t &event) {
  if (concernsTheWindowItself(event.detail) && windows_.contains(event.event)) {
    pointerWindow_ = event.event;
  }
}

void OwnWindows::pointerOut(const xcb_leave_notify_event_t &event) {
  if (concernsTheWindowItself(event.detail) && event.event == pointerWindow_) {
    pointerWindow_ = XCB_NONE;
  }
}

bool OwnWindows::getKeys() const {
  // Without a focused window the keys go to the one under the pointer.
  return focus_ == XCB_INPUT_FOCUS_POINTER_ROOT ? getButtons() : windows_.contains(focus_);
}

}  // namespace lumiwren
