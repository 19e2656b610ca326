#include "platform/linux/x11/capture/CaptureInput.h"

#include "platform/linux/x11/XKBProtocol.h"

#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <span>

namespace lumiwren {
namespace {

constexpr std::chrono::milliseconds betweenAttempts{10};
// A window manager holds the keyboard for as long as the keys of its shortcut are down, and most menus that
// are closing are gone by then.
constexpr int attemptsForSession = 4;

constexpr std::uint32_t pointerEvents = XCB_INPUT_XI_EVENT_MASK_BUTTON_PRESS |
                                        XCB_INPUT_XI_EVENT_MASK_BUTTON_RELEASE |
                                        XCB_INPUT_XI_EVENT_MASK_MOTION;
constexpr std::uint32_t keyboardEvents =
    XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;

constexpr int fixedPoint = 16;  // bits of a position's fraction

xcb_input_fp1616_t fixed(int position) {
  return position * (1 << fixedPoint);
}

PixelPoint pixel(xcb_input_fp1616_t x, xcb_input_fp1616_t y) {
  return {x >> fixedPoint, y >> fixedPoint};
}

}  // namespace

CaptureInput::CaptureInput(const CaptureDisplay &display, xcb_cursor_t cursor)
    : display_(display),
      server_(display.connection().get()),
      root_(display.connection().root()),
      cursor_(cursor),
      place_(display.pointer()) {
  readDevices();
}

CaptureInput::~CaptureInput() {
  release();
}

void CaptureInput::readDevices() {
  const auto devicesQuestion = xcb_input_xi_query_device(server_, XCB_INPUT_DEVICE_ALL);
  const auto keysQuestion = xcb_xkb_use_extension(server_, 1, 0);
  const XReply<xcb_input_xi_query_device_reply_t> devices(
      xcb_input_xi_query_device_reply(server_, devicesQuestion, nullptr));
  const XReply<xcb_xkb_use_extension_reply_t> keys(
      xcb_xkb_use_extension_reply(server_, keysQuestion, nullptr));
  if (devices) {
    for (auto position = xcb_input_xi_query_device_infos_iterator(devices.get()); position.rem > 0;
         xcb_input_xi_device_info_next(&position)) {
      const auto &device = *position.data;
      switch (device.type) {
        case XCB_INPUT_DEVICE_TYPE_MASTER_POINTER:
          sessionPointer_ = sessionPointer_ == 0 ? device.deviceid : sessionPointer_;
          break;
        case XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD:
          sessionKeyboard_ = sessionKeyboard_ == 0 ? device.deviceid : sessionKeyboard_;
          break;
        case XCB_INPUT_DEVICE_TYPE_SLAVE_POINTER:
          pointers_.push_back(device.deviceid);
          break;
        case XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD:
          keyboards_.push_back(device.deviceid);
          break;
        default:
          break;
      }
    }
  }
  moving_ = sessionPointer_;
  if (auto map = keys ? X11KeyMap::read(server_) : std::nullopt) {
    keyMap_ = std::move(*map);
  }
}

bool CaptureInput::takeDevice(std::uint16_t device, Kind kind) {
  const std::uint32_t events = kind == Kind::Pointer ? pointerEvents : keyboardEvents;
  const XReply<xcb_input_xi_grab_device_reply_t> reply(xcb_input_xi_grab_device_reply(
      server_,
      xcb_input_xi_grab_device(server_, root_, XCB_CURRENT_TIME, kind == Kind::Pointer ? cursor_ : XCB_NONE,
                               device, XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC, 0, 1,
                               &events),
      nullptr));
  if (!reply || reply->status != XCB_GRAB_STATUS_SUCCESS) {
    return false;
  }
  taken_.push_back(device);
  return true;
}

bool CaptureInput::takeSession(Kind kind) {
  return takeDevice(kind == Kind::Pointer ? sessionPointer_ : sessionKeyboard_, kind);
}

bool CaptureInput::isIdle(Kind kind) const {
  if (kind == Kind::Pointer) {
    constexpr std::uint16_t buttons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
    const XReply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(server_, xcb_query_pointer(server_, root_), nullptr));
    return reply && (reply->mask & buttons) == 0;
  }
  const XReply<xcb_query_keymap_reply_t> reply(
      xcb_query_keymap_reply(server_, xcb_query_keymap(server_), nullptr));
  return reply && std::all_of(std::begin(reply->keys), std::end(reply->keys),
                              [](std::uint8_t keys) { return keys == 0; });
}

bool CaptureInput::takeDevices(Kind kind) {
  // Injected input waits while the server is held; what comes from the hardware meanwhile is looked for
  // after.
  xcb_grab_server(server_);
  const auto before = taken_.size();
  bool any = false;
  if (isIdle(kind)) {
    for (const std::uint16_t device : kind == Kind::Pointer ? pointers_ : keyboards_) {
      any = takeDevice(device, kind) || any;
    }
  }
  if (any && !isIdle(kind)) {
    giveBack(before);
    any = false;
  }
  xcb_ungrab_server(server_);
  if (any && kind == Kind::Pointer) {
    // Each mouse now has a place of its own, which begins where the session's pointer is.
    for (auto device = taken_.begin() + static_cast<std::ptrdiff_t>(before); device != taken_.end();
         ++device) {
      xcb_input_xi_warp_pointer(server_, XCB_NONE, root_, 0, 0, 0, 0, fixed(place_.x), fixed(place_.y),
                                *device);
      moving_ = *device;
    }
    xcb_xfixes_hide_cursor(server_, root_);
  }
  xcb_flush(server_);
  return any;
}

void CaptureInput::giveBack(std::size_t from) {
  for (auto device = taken_.begin() + static_cast<std::ptrdiff_t>(from); device != taken_.end(); ++device) {
    xcb_input_xi_ungrab_device(server_, XCB_CURRENT_TIME, *device);
  }
  taken_.resize(from);
}

void CaptureInput::take() {
  ++attempts_;
  const auto takeOne = [this](Grip &grip, Kind kind) {
    if (grip != Grip::None) {
      return;
    }
    if (takeSession(kind)) {
      grip = Grip::Session;
    } else if (attempts_ > attemptsForSession && takeDevices(kind)) {
      grip = Grip::Devices;
    }
  };
  takeOne(pointer_, Kind::Pointer);
  takeOne(keyboard_, Kind::Keyboard);
  if (pointer_ != Grip::Devices) {
    const XReply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(server_, xcb_query_pointer(server_, root_), nullptr));
    if (reply) {
      place_ = {reply->root_x, reply->root_y};
    }
  }
  xcb_flush(server_);
}

std::optional<std::chrono::milliseconds> CaptureInput::pause() const {
  if (pointer_ != Grip::None && keyboard_ != Grip::None) {
    return std::nullopt;
  }
  return betweenAttempts;
}

std::optional<CaptureEvent> CaptureInput::event(const xcb_generic_event_t &event) {
  const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
  if ((event.response_type & 0x7f) != XCB_GE_GENERIC || generic.extension != display_.inputEvents()) {
    return std::nullopt;
  }
  // Presses, releases and motion have the same layout.
  const auto &input = reinterpret_cast<const xcb_input_button_press_event_t &>(event);
  CaptureEvent result{.kind = CaptureEvent::Kind::Motion, .pointer = place_};
  result.shift = (input.mods.effective & XCB_MOD_MASK_SHIFT) != 0;
  switch (generic.event_type) {
    case XCB_INPUT_MOTION:
      break;
    case XCB_INPUT_BUTTON_PRESS:
      result.kind = CaptureEvent::Kind::ButtonDown;
      result.button = input.detail;
      heldButtons_.insert(input.detail);
      break;
    case XCB_INPUT_BUTTON_RELEASE:
      result.kind = CaptureEvent::Kind::ButtonUp;
      result.button = input.detail;
      heldButtons_.erase(input.detail);
      break;
    case XCB_INPUT_KEY_PRESS:
    case XCB_INPUT_KEY_RELEASE: {
      const bool down = generic.event_type == XCB_INPUT_KEY_PRESS;
      result.kind = down ? CaptureEvent::Kind::KeyDown : CaptureEvent::Kind::KeyUp;
      result.key = keyMap_.symbol(static_cast<xcb_keycode_t>(input.detail), input.group.effective);
      if (down) {
        heldKeys_.insert(input.detail);
      } else {
        heldKeys_.erase(input.detail);
      }
      // A keyboard says where its own pointer is, which is not the one that moves.
      return result;
    }
    default:
      return std::nullopt;
  }
  moving_ = input.deviceid;
  place_ = result.pointer = pixel(input.root_x, input.root_y);
  return result;
}

void CaptureInput::movePointer(int dx, int dy) const {
  // To a place rather than by a distance: what is between two pixels is lost.
  xcb_input_xi_warp_pointer(server_, XCB_NONE, root_, 0, 0, 0, 0, fixed(place_.x + dx), fixed(place_.y + dy),
                            moving_);
  xcb_flush(server_);
}

void CaptureInput::release() {
  giveBack(0);
  if (pointer_ == Grip::Devices) {
    xcb_xfixes_show_cursor(server_, root_);
  }
  pointer_ = keyboard_ = Grip::None;
  heldButtons_.clear();
  heldKeys_.clear();
  xcb_flush(server_);
}

}  // namespace lumiwren
