#include "platform/linux/x11/X11PanelWindows.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace lumiwren {
namespace {

template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
ReplyPtr<Reply> owned(Reply *reply) {
  return {reply, &std::free};
}

}  // namespace

X11PanelWindows::X11PanelWindows(double pixelsPerPoint) : pixelsPerPoint_(pixelsPerPoint) {}

X11PanelWindows::~X11PanelWindows() = default;

bool X11PanelWindows::isConnected() {
  if (!connection_) {
    int screenNumber = 0;
    connection_.reset(xcb_connect(nullptr, &screenNumber));
    if (xcb_connection_has_error(connection_.get()) != 0) {
      return false;
    }
    auto position = xcb_setup_roots_iterator(xcb_get_setup(connection_.get()));
    for (int index = 0; index < screenNumber; ++index) {
      xcb_screen_next(&position);
    }
    screen_ = position.data;
    ownWindow_ = xcb_generate_id(connection_.get());
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_.get(), 0, ownWindow_, screen_->root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    const auto name = "_NET_WM_CM_S" + std::to_string(screenNumber);
    const auto atom = owned(xcb_intern_atom_reply(
        connection_.get(),
        xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    compositorSelection_ = atom ? atom->atom : static_cast<xcb_atom_t>(XCB_NONE);
  }
  return xcb_connection_has_error(connection_.get()) == 0;
}

void X11PanelWindows::drainEvents() {
  while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
    // Errors about windows that have gone, which are nobody's fault.
  }
}

bool X11PanelWindows::isTranslucencySupported() {
  if (!isConnected()) {
    return false;
  }
  const auto owner = owned(xcb_get_selection_owner_reply(
      connection_.get(), xcb_get_selection_owner(connection_.get(), compositorSelection_), nullptr));
  return owner && owner->owner != XCB_NONE;
}

xcb_window_t X11PanelWindows::focusedWindow() {
  const auto focus =
      owned(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
  return focus ? focus->focus : static_cast<xcb_window_t>(XCB_NONE);
}

xcb_timestamp_t X11PanelWindows::serverTime() {
  drainEvents();
  xcb_change_property(connection_.get(), XCB_PROP_MODE_APPEND, ownWindow_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING,
                      8, 0, nullptr);
  xcb_flush(connection_.get());
  while (const auto event = owned(xcb_wait_for_event(connection_.get()))) {
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
  xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_POINTER_ROOT, xWindow, now);
  xcb_flush(connection_.get());
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
    xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_PARENT, previous.window, previous.taken);
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
  const auto placeCookie = xcb_translate_coordinates(connection_.get(), xWindow, screen_->root, 0, 0);
  const auto sizeCookie = xcb_get_geometry(connection_.get(), xWindow);
  const auto place = owned(xcb_translate_coordinates_reply(connection_.get(), placeCookie, nullptr));
  const auto size = owned(xcb_get_geometry_reply(connection_.get(), sizeCookie, nullptr));
  if (!place || !size) {
    return {};
  }
  const DesktopCoordinates coordinates{primaryMonitor(connection_.get(), screen_), pixelsPerPoint_};
  return coordinates.rect({place->dst_x, place->dst_y, size->width, size->height});
}

}  // namespace lumiwren
