#include "platform/linux/x11/X11PanelWindows.h"

#include "platform/linux/x11/X11Screens.h"

#include <xcb/xfixes.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace lumiwren {

namespace {

/// What a frame drawn by the window itself reaches beyond the window proper, as GTK and, after it,
/// compositors and screenshot programs know it.
constexpr std::string_view frameExtentsName = "_GTK_FRAME_EXTENTS";

}  // namespace

X11PanelWindows::X11PanelWindows(xcb_connection_t *toolkit, double pixelsPerPoint,
                                 WatchReadable watchReadable)
    : toolkit_(toolkit), pixelsPerPoint_(pixelsPerPoint), watchReadable_(std::move(watchReadable)) {}

X11PanelWindows::~X11PanelWindows() = default;

bool X11PanelWindows::isConnected() {
  if (!connection_) {
    connect();
  }
  return connection_->isUsable();
}

void X11PanelWindows::connect() {
  connection_.emplace();
  if (!connection_->isUsable()) {
    return;
  }
  xcb_connection_t *const connection = connection_->get();
  const auto compositorQuestion =
      connection_->askAtom("_NET_WM_CM_S" + std::to_string(connection_->screenNumber()));
  const auto extentsQuestion = connection_->askAtom(frameExtentsName);
  const auto xfixesQuestion =
      xcb_xfixes_query_version(connection, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION);
  ownWindow_ = xcb_generate_id(connection);
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(connection, 0, ownWindow_, connection_->root(), -1, -1, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
  compositorSelection_ = connection_->atom(compositorQuestion);
  frameExtents_ = connection_->atom(extentsQuestion);
  const XReply<xcb_xfixes_query_version_reply_t> xfixes(
      xcb_xfixes_query_version_reply(connection, xfixesQuestion, nullptr));
  if (xfixes) {
    xfixesFirstEvent_ = xcb_get_extension_data(connection, &xcb_xfixes_id)->first_event;
    xcb_xfixes_select_selection_input(connection, ownWindow_, compositorSelection_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
  }
  xcb_flush(connection);
  watch_ = watchReadable_(xcb_get_file_descriptor(connection), [this] { handleEvents(); });
}

void X11PanelWindows::note(const xcb_generic_event_t &event) {
  compositorHasChanged_ |= xfixesFirstEvent_ != 0 &&
                           (event.response_type & 0x7f) == xfixesFirstEvent_ + XCB_XFIXES_SELECTION_NOTIFY;
}

void X11PanelWindows::readEvents() {
  // Among them errors about windows that have gone, which are nobody's fault.
  while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_->get())}) {
    note(*event);
  }
}

void X11PanelWindows::handleEvents() {
  readEvents();
  if (std::exchange(compositorHasChanged_, false)) {
    compositorChanged_.notify();
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

Handle X11PanelWindows::observeTranslucency(std::function<void()> changed) {
  isConnected();
  return compositorChanged_.observe(std::move(changed));
}

void X11PanelWindows::setForm(NativeWindow window, const WindowForm &form) {
  if (!isConnected() || xfixesFirstEvent_ == 0) {
    return;
  }
  const auto xWindow = static_cast<xcb_window_t>(window);
  setShape(xWindow, XCB_SHAPE_SK_BOUNDING, form.visible);
  setShape(xWindow, XCB_SHAPE_SK_INPUT, form.clickable);
  if (form.shadow == WindowForm::Shadow{}) {
    xcb_delete_property(toolkit_, xWindow, frameExtents_);
  } else {
    const auto &[left, top, right, bottom] = form.shadow;
    const std::array<std::int32_t, 4> extents{left, right, top, bottom};
    xcb_change_property(toolkit_, XCB_PROP_MODE_REPLACE, xWindow, frameExtents_, XCB_ATOM_CARDINAL, 32,
                        extents.size(), extents.data());
  }
  xcb_flush(toolkit_);
}

void X11PanelWindows::setShape(xcb_window_t window, std::uint8_t kind, const std::vector<WindowPart> &parts) {
  if (parts.empty()) {
    xcb_xfixes_set_window_shape_region(toolkit_, window, kind, 0, 0, XCB_XFIXES_REGION_NONE);
    return;
  }
  std::vector<xcb_rectangle_t> rectangles;
  rectangles.reserve(parts.size());
  for (const auto &part : parts) {
    rectangles.push_back({static_cast<std::int16_t>(part.x), static_cast<std::int16_t>(part.y),
                          static_cast<std::uint16_t>(part.width), static_cast<std::uint16_t>(part.height)});
  }
  const xcb_xfixes_region_t region = xcb_generate_id(toolkit_);
  xcb_xfixes_create_region(toolkit_, region, static_cast<std::uint32_t>(rectangles.size()),
                           rectangles.data());
  xcb_xfixes_set_window_shape_region(toolkit_, window, kind, 0, 0, region);
  xcb_xfixes_destroy_region(toolkit_, region);
}

xcb_window_t X11PanelWindows::focusedWindow() {
  const XReply<xcb_get_input_focus_reply_t> focus(
      xcb_get_input_focus_reply(connection_->get(), xcb_get_input_focus(connection_->get()), nullptr));
  return focus ? focus->focus : static_cast<xcb_window_t>(XCB_NONE);
}

xcb_timestamp_t X11PanelWindows::serverTime() {
  readEvents();
  xcb_change_property(connection_->get(), XCB_PROP_MODE_APPEND, ownWindow_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING,
                      8, 0, nullptr);
  xcb_flush(connection_->get());
  while (const XReply<xcb_generic_event_t> event{xcb_wait_for_event(connection_->get())}) {
    if ((event->response_type & ~0x80) == XCB_PROPERTY_NOTIFY) {
      return reinterpret_cast<const xcb_property_notify_event_t *>(event.get())->time;
    }
    note(*event);
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
  handleEvents();
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
  handleEvents();
}

std::uint32_t X11PanelWindows::currentTime() {
  if (!isConnected()) {
    return 0;
  }
  const auto now = serverTime();
  handleEvents();
  return now;
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
  handleEvents();  // What came along with the replies does not make the connection readable any more.
  if (!place || !size || !monitors) {
    return {};
  }
  return DesktopCoordinates{monitors->primary(), pixelsPerPoint_}.rect(
      {place->dst_x, place->dst_y, size->width, size->height});
}

}  // namespace lumiwren
