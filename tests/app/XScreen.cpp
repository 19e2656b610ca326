#include "app/XScreen.h"

#include <xcb/xtest.h>

#include <cstdlib>
#include <stdexcept>

namespace lumiwren::testing {
namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T *reply) {
  if (!reply) {
    throw std::runtime_error("the X server did not answer");
  }
  return {reply, &std::free};
}

}  // namespace

XScreen::XScreen(const std::string &display)
    : connection_(xcb_connect(display.c_str(), nullptr), &xcb_disconnect),
      focusChanges_(xcb_connect(display.c_str(), nullptr), &xcb_disconnect) {
  if (xcb_connection_has_error(connection()) || xcb_connection_has_error(focusChanges_.get())) {
    throw std::runtime_error("no X server at " + display);
  }
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection())).data->root;
  const uint32_t events = XCB_EVENT_MASK_FOCUS_CHANGE;
  xcb_change_window_attributes(focusChanges_.get(), root_, XCB_CW_EVENT_MASK, &events);
  xcb_flush(focusChanges_.get());
}

xcb_atom_t XScreen::atom(const std::string &name) const {
  const auto cookie = xcb_intern_atom(connection(), 0, static_cast<uint16_t>(name.size()), name.c_str());
  return owned(xcb_intern_atom_reply(connection(), cookie, nullptr))->atom;
}

std::vector<QPoint> XScreen::windows() const {
  const auto tree = owned(xcb_query_tree_reply(connection(), xcb_query_tree(connection(), root_), nullptr));
  std::vector<QPoint> corners;
  for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
    const xcb_window_t window = xcb_query_tree_children(tree.get())[i];
    const std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&std::free)> attributes(
        xcb_get_window_attributes_reply(connection(), xcb_get_window_attributes(connection(), window),
                                        nullptr),
        &std::free);
    const std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> geometry(
        xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), window), nullptr), &std::free);
    // Without an answer the window has gone meanwhile.
    if (attributes && geometry && attributes->map_state == XCB_MAP_STATE_VIEWABLE) {
      corners.emplace_back(geometry->x, geometry->y);
    }
  }
  return corners;
}

int XScreen::pixels(QRgb colour) const {
  const auto size =
      owned(xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), root_), nullptr));
  const auto image = owned(xcb_get_image_reply(
      connection(),
      xcb_get_image(connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, root_, 0, 0, size->width, size->height, ~0U),
      nullptr));
  const auto *const data = reinterpret_cast<const QRgb *>(xcb_get_image_data(image.get()));
  int count = 0;
  for (int i = 0; i < size->width * size->height; ++i) {
    count += (data[i] & RGB_MASK) == (colour & RGB_MASK);
  }
  return count;
}

void XScreen::click(QPoint position, uint8_t button) const {
  xcb_test_fake_input(connection(), XCB_MOTION_NOTIFY, 0, 0, root_, static_cast<int16_t>(position.x()),
                      static_cast<int16_t>(position.y()), 0);
  xcb_test_fake_input(connection(), XCB_BUTTON_PRESS, button, 0, root_, 0, 0, 0);
  xcb_test_fake_input(connection(), XCB_BUTTON_RELEASE, button, 0, root_, 0, 0, 0);
  xcb_flush(connection());
}

void XScreen::press(uint32_t keysym) const {
  const xcb_setup_t *const setup = xcb_get_setup(connection());
  const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
  const auto mapping = owned(xcb_get_keyboard_mapping_reply(
      connection(), xcb_get_keyboard_mapping(connection(), setup->min_keycode, count), nullptr));
  const xcb_keysym_t *const keysyms = xcb_get_keyboard_mapping_keysyms(mapping.get());
  for (std::size_t i = 0; i < count; ++i) {
    if (keysyms[i * mapping->keysyms_per_keycode] == keysym) {
      const auto code = static_cast<uint8_t>(setup->min_keycode + i);
      xcb_test_fake_input(connection(), XCB_KEY_PRESS, code, 0, root_, 0, 0, 0);
      xcb_test_fake_input(connection(), XCB_KEY_RELEASE, code, 0, root_, 0, 0, 0);
      xcb_flush(connection());
      return;
    }
  }
  throw std::runtime_error("no key for the keysym");
}

bool XScreen::keyboardIsGrabbed() const {
  while (const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event{
      xcb_poll_for_event(focusChanges_.get()), &std::free}) {
    // Where no window has the focus, the root window is told of grabs.
    const auto type = event->response_type & 0x7f;
    if (type == XCB_FOCUS_IN || type == XCB_FOCUS_OUT) {
      const auto mode = reinterpret_cast<const xcb_focus_in_event_t &>(*event).mode;
      keyboardIsGrabbed_ =
          mode == XCB_NOTIFY_MODE_GRAB || (keyboardIsGrabbed_ && mode != XCB_NOTIFY_MODE_UNGRAB);
    }
  }
  return keyboardIsGrabbed_;
}

}  // namespace lumiwren::testing
