#include "platform/x11/keys/InputDriver.h"

#include "platform/linux/EvdevKeyCodes.h"
#include "platform/linux/x11/XKBProtocol.h"

#include <xcb/xtest.h>

#include <stdexcept>
#include <vector>

namespace lumiwren::testing {

InputDriver::InputDriver() {
  if (!connection_.isUsable()) {
    throw std::runtime_error("no X server to type into");
  }
  const XReply<xcb_xkb_use_extension_reply_t> reply(xcb_xkb_use_extension_reply(
      connection_.get(), xcb_xkb_use_extension(connection_.get(), 1, 0), nullptr));
}

std::uint8_t InputDriver::keycode(std::uint16_t evdevCode) {
  return static_cast<std::uint8_t>(evdevCode + evdevOffset);
}

void InputDriver::finish() const {
  const XReply<xcb_get_input_focus_reply_t> reply(
      xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
}

void InputDriver::fake(std::uint8_t type, std::uint8_t detail, int x, int y) {
  xcb_test_fake_input(connection_.get(), type, detail, XCB_CURRENT_TIME, XCB_NONE,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
  finish();
}

void InputDriver::tap(std::uint16_t evdevCode) {
  press(evdevCode);
  release(evdevCode);
}

void InputDriver::pressAll(std::initializer_list<std::uint16_t> evdevCodes) {
  for (const auto code : evdevCodes) {
    press(code);
  }
}

void InputDriver::releaseAll(std::initializer_list<std::uint16_t> evdevCodes) {
  for (const auto code : evdevCodes) {
    release(code);
  }
}

void InputDriver::tapTogether(std::initializer_list<std::uint16_t> evdevCodes) {
  pressAll(evdevCodes);
  for (auto code = std::rbegin(evdevCodes); code != std::rend(evdevCodes); ++code) {
    release(*code);
  }
}

void InputDriver::click(std::uint8_t button) {
  pressButton(button);
  releaseButton(button);
}

void InputDriver::moveTo(int x, int y) {
  fake(XCB_MOTION_NOTIFY, 0, x, y);
}

KeySet InputDriver::heldKeys() const {
  const XReply<xcb_query_keymap_reply_t> reply(
      xcb_query_keymap_reply(connection_.get(), xcb_query_keymap(connection_.get()), nullptr));
  KeySet keys;
  for (std::size_t code = 0; reply && code < keys.size(); ++code) {
    keys[code] = (reply->keys[code / 8] >> (code % 8) & 1U) != 0;
  }
  return keys;
}

bool InputDriver::holdsButton() const {
  const XReply<xcb_query_pointer_reply_t> reply(xcb_query_pointer_reply(
      connection_.get(), xcb_query_pointer(connection_.get(), connection_.root()), nullptr));
  constexpr unsigned buttons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
  return reply && (reply->mask & buttons) != 0;
}

std::uint8_t InputDriver::modifiers() const {
  const XReply<xcb_xkb_get_state_reply_t> state(xcb_xkb_get_state_reply(
      connection_.get(), xcb_xkb_get_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD), nullptr));
  return state ? state->mods : 0;
}

std::uint8_t InputDriver::lockedModifiers() const {
  const XReply<xcb_xkb_get_state_reply_t> state(xcb_xkb_get_state_reply(
      connection_.get(), xcb_xkb_get_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD), nullptr));
  return state ? state->lockedMods : 0;
}

void InputDriver::lockGroup(std::uint8_t group) {
  xcb_xkb_latch_lock_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, group, 0, 0, 0);
  finish();
}

void InputDriver::lockModifiers(std::uint8_t affected, std::uint8_t locked) {
  xcb_xkb_latch_lock_state(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, affected, locked, 0, 0, 0, 0, 0);
  finish();
}

xcb_window_t InputDriver::focus() const {
  const XReply<xcb_get_input_focus_reply_t> reply(
      xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
  return reply ? reply->focus : XCB_NONE;
}

void InputDriver::setFocus(xcb_window_t window) {
  xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
  finish();
}

TestWindow::TestWindow(const Options &options) : window_(xcb_generate_id(connection_.get())) {
  const std::uint32_t events =
      XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_EXPOSURE;
  xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window_, connection_.root(),
                    static_cast<std::int16_t>(options.x), static_cast<std::int16_t>(options.y), options.width,
                    options.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                    &events);
  if (!options.instance.empty() || !options.className.empty()) {
    const std::string value = options.instance + '\0' + options.className + '\0';
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
                        8, static_cast<std::uint32_t>(value.size()), value.data());
  }
  xcb_map_window(connection_.get(), window_);
  finish();
}

void TestWindow::finish() const {
  const XReply<xcb_get_input_focus_reply_t> reply(
      xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr));
}

void TestWindow::takeFocus() {
  xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_POINTER_ROOT, window_, XCB_CURRENT_TIME);
  finish();
}

std::vector<TestWindow::Key> TestWindow::takeKeys() {
  finish();
  std::vector<Key> keys;
  while (const XReply<xcb_generic_event_t> event{xcb_poll_for_queued_event(connection_.get())}) {
    const int type = event->response_type & 0x7f;
    if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE) {
      const auto &key = reinterpret_cast<const xcb_key_press_event_t &>(*event);
      keys.push_back({type == XCB_KEY_PRESS, key.detail, key.state});
    }
  }
  return keys;
}

}  // namespace lumiwren::testing
