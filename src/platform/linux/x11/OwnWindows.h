#pragma once

#include <xcb/xcb.h>

#include <set>

namespace lumiwren {

/// Whether key and button presses go to windows of this program, as the server tells by its focus and
/// crossing events. The events come in one order with the presses, so the answer is exact for each of them.
/// One thread.
class OwnWindows {
public:
  void add(xcb_window_t window) { windows_.insert(window); }
  /// The window is not to be seen any more; remove(): it is destroyed.
  void leave(xcb_window_t window);
  void remove(xcb_window_t window);

  /// Where focus and pointer are, as the server answers when it is asked.
  void setFocus(xcb_window_t focus) { focus_ = focus; }
  void setPointerWindow(xcb_window_t window) { pointerWindow_ = window; }

  void focusIn(const xcb_focus_in_event_t &event);
  void focusOut(const xcb_focus_out_event_t &event);
  void pointerIn(const xcb_enter_notify_event_t &event);
  void pointerOut(const xcb_leave_notify_event_t &event);

  bool getKeys() const;
  bool getButtons() const { return windows_.contains(pointerWindow_); }

private:
  std::set<xcb_window_t> windows_;
  xcb_window_t focus_ = XCB_NONE;
  xcb_window_t pointerWindow_ = XCB_NONE;
};

}  // namespace lumiwren
