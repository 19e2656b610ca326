#include "platform/linux/x11/X11EventMonitors.h"

#include "platform/linux/EvdevKeyCodes.h"
#include "platform/linux/x11/XKBProtocol.h"

#include <span>
#include <vector>

namespace lumiwren {
namespace {

constexpr std::uint32_t primaryButton = 1;
constexpr std::uint32_t secondaryButton = 3;

// An event of the X Keyboard Extension; they share one number and tell themselves apart by this field.
std::uint8_t xkbType(const xcb_generic_event_t &event) {
  return event.pad0;
}

template <typename Event>
const Event &as(const xcb_generic_event_t &event) {
  return reinterpret_cast<const Event &>(event);
}

}  // namespace

X11EventMonitors::X11EventMonitors(MainQueue &mainQueue, X11InputChannel &channel,
                                   std::uint32_t ownResourceBase)
    : mainQueue_(mainQueue),
      channel_(channel),
      ownResourceBase_(ownResourceBase),
      thread_([this] { run(); }) {}

X11EventMonitors::~X11EventMonitors() {
  channel_.shutDown();
  thread_.join();
}

Handle X11EventMonitors::addGlobalMonitor(std::uint32_t mask, EventMonitors::GlobalHandler handler) {
  return watching_.get() ? monitors_->add(mask, std::move(handler)) : Handle();
}

void X11EventMonitors::run() {
  const bool watching = channel_.isUsable() && startWatching();
  watchingPromise_.set_value(watching);
  while (watching) {
    const auto event = channel_.nextEvent();
    if (!event) {
      return;
    }
    handle(*event);
  }
}

bool X11EventMonitors::startWatching() {
  const auto lock = channel_.lockForSending();
  xcb_connection_t *connection = channel_.connection().get();
  const xcb_window_t root = channel_.connection().root();

  // Created and focused windows, before anything is asked, so that what changes meanwhile comes as an event.
  const std::uint32_t rootEvents = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_FOCUS_CHANGE;
  xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &rootEvents);

  struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } masters{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
            XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE |
                XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS},
      devices{{XCB_INPUT_DEVICE_ALL, 1}, XCB_INPUT_XI_EVENT_MASK_HIERARCHY};
  xcb_input_xi_select_events(connection, root, 1, &devices.head);
  const auto selecting = xcb_input_xi_select_events_checked(connection, root, 1, &masters.head);

  const std::uint16_t keyboardEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY |
                                       XCB_XKB_EVENT_TYPE_MAP_NOTIFY | XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
  const std::uint16_t mapParts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
  xcb_xkb_select_events_details_t details{};
  details.affectNewKeyboard = XCB_XKB_NKN_DETAIL_KEYCODES;
  details.newKeyboardDetails = XCB_XKB_NKN_DETAIL_KEYCODES;
  details.affectState = XCB_XKB_STATE_PART_MODIFIER_STATE;
  details.stateDetails = XCB_XKB_STATE_PART_MODIFIER_STATE;
  xcb_xkb_select_events_aux(connection, XCB_XKB_ID_USE_CORE_KBD, keyboardEvents, 0, 0, mapParts, mapParts,
                            &details);

  const XReply<xcb_generic_error_t> refused(xcb_request_check(connection, selecting));
  const XReply<xcb_xkb_get_state_reply_t> state(
      xcb_xkb_get_state_reply(connection, xcb_xkb_get_state(connection, XCB_XKB_ID_USE_CORE_KBD), nullptr));
  if (refused || !state) {
    return false;
  }
  modifiers_ = state->mods;
  readKeyMap();
  findOwnWindows();
  locateFocusAndPointer();
  return true;
}

void X11EventMonitors::findOwnWindows() {
  xcb_connection_t *connection = channel_.connection().get();
  std::vector<xcb_window_t> level{channel_.connection().root()};
  while (!level.empty()) {
    std::vector<xcb_query_tree_cookie_t> questions;
    questions.reserve(level.size());
    for (const xcb_window_t window : level) {
      questions.push_back(xcb_query_tree(connection, window));
    }
    level.clear();
    for (const auto question : questions) {
      if (const XReply<xcb_query_tree_reply_t> reply(xcb_query_tree_reply(connection, question, nullptr));
          reply) {
        const auto count = static_cast<std::size_t>(xcb_query_tree_children_length(reply.get()));
        for (const xcb_window_t child : std::span(xcb_query_tree_children(reply.get()), count)) {
          watchIfOwn(child);
          level.push_back(child);
        }
      }
    }
  }
}

void X11EventMonitors::watchIfOwn(xcb_window_t window) {
  if (channel_.connection().resourceBase(window) != ownResourceBase_) {
    return;
  }
  const std::uint32_t events = XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_ENTER_WINDOW |
                               XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                               XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
  xcb_change_window_attributes(channel_.connection().get(), window, XCB_CW_EVENT_MASK, &events);
  ownWindows_.add(window);
}

void X11EventMonitors::locateFocusAndPointer() {
  xcb_connection_t *connection = channel_.connection().get();
  const XReply<xcb_get_input_focus_reply_t> focus(
      xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
  ownWindows_.setFocus(focus ? focus->focus : XCB_NONE);

  xcb_window_t deepest = XCB_NONE;
  for (xcb_window_t window = channel_.connection().root(); window != XCB_NONE;) {
    deepest = window;
    const XReply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, window), nullptr));
    window = pointer ? pointer->child : XCB_NONE;
  }
  ownWindows_.setPointerWindow(deepest);
}

void X11EventMonitors::readKeyMap() {
  if (auto keyMap = X11KeyMap::read(channel_.connection().get())) {
    keyMap_ = std::move(*keyMap);
  }
}

void X11EventMonitors::handle(const xcb_generic_event_t &event) {
  const auto type = static_cast<std::uint8_t>(event.response_type & 0x7fU);
  if (type == channel_.xkbFirstEvent()) {
    handleKeyboardChange(event);
    return;
  }
  switch (type) {
    case XCB_GE_GENERIC:
      handleInput(as<xcb_ge_generic_event_t>(event));
      break;
    case XCB_FOCUS_IN:
      ownWindows_.focusIn(as<xcb_focus_in_event_t>(event));
      break;
    case XCB_FOCUS_OUT:
      ownWindows_.focusOut(as<xcb_focus_out_event_t>(event));
      break;
    case XCB_ENTER_NOTIFY:
      ownWindows_.pointerIn(as<xcb_enter_notify_event_t>(event));
      break;
    case XCB_LEAVE_NOTIFY:
      ownWindows_.pointerOut(as<xcb_leave_notify_event_t>(event));
      break;
    case XCB_UNMAP_NOTIFY:
      ownWindows_.leave(as<xcb_unmap_notify_event_t>(event).window);
      break;
    case XCB_DESTROY_NOTIFY:
      ownWindows_.remove(as<xcb_destroy_notify_event_t>(event).window);
      break;
    case XCB_CREATE_NOTIFY: {
      const xcb_window_t window = as<xcb_create_notify_event_t>(event).window;
      if (channel_.connection().resourceBase(window) == ownResourceBase_) {
        const auto lock = channel_.lockForSending();
        watchIfOwn(window);
        // It may have been mapped before its events were selected.
        locateFocusAndPointer();
      }
      break;
    }
    default:
      break;
  }
}

void X11EventMonitors::handleInput(const xcb_ge_generic_event_t &event) {
  if (event.extension != channel_.inputOpcode()) {
    return;
  }
  switch (event.event_type) {
    case XCB_INPUT_RAW_KEY_PRESS:
      keyPressed(reinterpret_cast<const xcb_input_raw_key_press_event_t &>(event));
      break;
    case XCB_INPUT_RAW_KEY_RELEASE: {
      const auto &release = reinterpret_cast<const xcb_input_raw_key_release_event_t &>(event);
      heldKeys_.erase({release.sourceid, release.detail});
      break;
    }
    case XCB_INPUT_RAW_BUTTON_PRESS:
      buttonPressed(reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event));
      break;
    case XCB_INPUT_HIERARCHY:
      // A keyboard that is unplugged never tells of its releases.
      heldKeys_.clear();
      break;
    default:
      break;
  }
}

void X11EventMonitors::handleKeyboardChange(const xcb_generic_event_t &event) {
  if (xkbType(event) == XCB_XKB_STATE_NOTIFY) {
    modifiers_ = as<xcb_xkb_state_notify_event_t>(event).mods;
  } else {
    const auto lock = channel_.lockForSending();
    readKeyMap();
  }
}

void X11EventMonitors::keyPressed(const xcb_input_raw_key_press_event_t &press) {
  const bool isOwn = channel_.isOwnPress(press.full_sequence, press.detail);
  // Some servers, those for remote desktops above all, repeat the press of a held key.
  const bool isRepeat = !heldKeys_.emplace(press.sourceid, press.detail).second;
  if (isOwn || isRepeat || ownWindows_.getKeys() || press.detail < evdevOffset || press.detail > 255) {
    return;
  }
  const auto keycode = static_cast<xcb_keycode_t>(press.detail);
  if (keyMap_.modifierKeys()[keycode]) {
    return;
  }
  const auto code = pressedKeyCode(keycode - evdevOffset, keyMap_.symbol(keycode, 0));
  if (code) {
    report({EventKind::KeyDown, *code, keyMap_.modifierFlags(modifiers_), press.time});
  }
}

void X11EventMonitors::buttonPressed(const xcb_input_raw_button_press_event_t &press) {
  if (ownWindows_.getButtons()) {
    return;
  }
  const std::uint32_t button = logicalButton(press.sourceid, press.detail);
  if (button == primaryButton || button == secondaryButton) {
    report({button == primaryButton ? EventKind::LeftMouseDown : EventKind::RightMouseDown, 0,
            keyMap_.modifierFlags(modifiers_), press.time});
  }
}

std::uint32_t X11EventMonitors::logicalButton(xcb_input_device_id_t device, std::uint32_t physicalButton) {
  const auto lock = channel_.lockForSending();
  xcb_connection_t *connection = channel_.connection().get();
  // Button mappings know devices of one byte only.
  const auto deviceQuestion =
      xcb_input_get_device_button_mapping(connection, static_cast<std::uint8_t>(device));
  const auto commonQuestion = xcb_get_pointer_mapping(connection);
  const XReply<xcb_input_get_device_button_mapping_reply_t> deviceMapping(
      xcb_input_get_device_button_mapping_reply(connection, deviceQuestion, nullptr));
  const XReply<xcb_get_pointer_mapping_reply_t> commonMapping(
      xcb_get_pointer_mapping_reply(connection, commonQuestion, nullptr));

  std::uint32_t button = physicalButton;
  const auto apply = [&button](const std::uint8_t *map, std::size_t length) {
    if (button >= 1 && button <= length) {
      button = map[button - 1];
    }
  };
  if (deviceMapping) {
    apply(xcb_input_get_device_button_mapping_map(deviceMapping.get()), deviceMapping->map_size);
  }
  if (commonMapping) {
    apply(xcb_get_pointer_mapping_map(commonMapping.get()), commonMapping->map_len);
  }
  return button;
}

void X11EventMonitors::report(const InputEvent &event) const {
  mainQueue_.post([monitors = std::weak_ptr(monitors_), event] {
    if (const auto list = monitors.lock()) {
      list->tell(event);
    }
  });
}

}  // namespace lumiwren
