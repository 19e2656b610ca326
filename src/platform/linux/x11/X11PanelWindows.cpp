#include "platform/linux/x11/X11PanelWindows.h"

#include "platform/linux/x11/X11Screens.h"

#include <cstdint>
#include <string>

namespace lumiwren {

X11PanelWindows::X11PanelWindows(double pixelsPerPoint) : pixelsPerPoint_(pixelsPerPoint) {}

X11PanelWindows::~X11PanelWindows() = default;

bool X11PanelWindows::isConnected() {
  if (!connection_) {
    connection_.emplace();
    if (!connection_->isUsable()) {
      return false;
    }
    ownWindow_ = xcb_generate_id(connection_->get());
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_->get(), 0, ownWindow_, connection_->root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    compositorSelection_ =
        connection_->atom(connection_->askAtom("_NET_WM_CM_S" + std::to_string(connection_->screenNumber())));
  }
  return connection_->isUsable();
}

void X11PanelWindows::drainEvents() {
  while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_->get())}) {
    // Errors about windows that have gone, which are nobody's fault.
  }
}

bool X11PanelWindows::isTranslucencySupported() {
  if (!isConnected()) {
    return false;
  }
  const XReply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      connection_->get(), xcb_get_selection_owner(connection_->get(), compositorSelection_), nullptr));
  return owner && owner->owner != XCB_NONE;
}

xcb_window_t X11PanelWindows::focusedWindow() {
  const XReply<xcb_get_input_focus_reply_t> focus(
      xcb_get_input_focus_reply(connection_->get(), xcb_get_input_focus(connection_->get()), nullptr));
  return focus ? focus->focus : static_cast<xcb_window_t>(XCB_NONE);
}

xcb_timestamp_t X11PanelWindows::serverTime() {
  drainEvents();
  xcb_change_property(connection_->get(), XCB_PROP_MODE_APPEND, ownWindow_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING,
                      8, 0, nullptr);
  xcb_flush(connection_->get());
  while (const XReply<xcb_generic_event_t> event{xcb_wait_for_event(connection_->get())}) {
    if ((event->response_type & ~0x80) == XCB_PROPERTY_NOTIFY) {
      return reinterpret_cast<const xcb_property_notify_event_t *>(event.get())->time;
    }
  }
  return XCB_CURRENT_TIME;
}

void X11PanelWindows::makeKey(NativeWindow window) {
  if (!isConnected()) {
    return;
  }
  const auto focused = focusedWindow();
  const auto xWindow = static_cast<xcb_window_t>(window);
  if (focused == xWindow) {
    return;
  }
  const auto now = serverTime();
  previous_[window] = {focused, now};
  xcb_set_input_focus(connection_->get(), XCB_INPUT_FOCUS_POINTER_ROOT, xWindow, now);
  xcb_flush(connection_->get());
}

void X11PanelWindows::resignKey(NativeWindow window) {
  const auto found = previous_.find(window);
  if (found == previous_.end() || !isConnected()) {
    return;
  }
  const auto previous = found->second;
  previous_.erase(found);
  if (focusedWindow() == static_cast<xcb_window_t>(window)) {
    // With the time at which the focus was taken: a click that gives it to somebody else at this moment is
    // later, and wins whichever request the server gets first.
    xcb_set_input_focus(connection_->get(), XCB_INPUT_FOCUS_PARENT, previous.window, previous.taken);
    // The server has done it before the caller unmaps the window over another connection.
    focusedWindow();
  }
  drainEvents();
}

Rect X11PanelWindows::frame(NativeWindow window) {
  if (!isConnected()) {
    return {};
  }
  const auto xWindow = static_cast<xcb_window_t>(window);
  const auto placeCookie = xcb_translate_coordinates(connection_->get(), xWindow, connection_->root(), 0, 0);
  const auto sizeCookie = xcb_get_geometry(connection_->get(), xWindow);
  const XReply<xcb_translate_coordinates_reply_t> place(
      xcb_translate_coordinates_reply(connection_->get(), placeCookie, nullptr));
  const XReply<xcb_get_geometry_reply_t> size(
      xcb_get_geometry_reply(connection_->get(), sizeCookie, nullptr));
  const auto monitors = X11Screens::layout(*connection_);
  if (!place || !size || !monitors) {
    return {};
  }
  return DesktopCoordinates{monitors->primary(), pixelsPerPoint_}.rect(
      {place->dst_x, place->dst_y, size->width, size->height});
}

}  // namespace lumiwren
