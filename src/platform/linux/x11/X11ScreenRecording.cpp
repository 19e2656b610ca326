#include "platform/linux/x11/X11ScreenRecording.h"

#include "platform/linux/x11/XReply.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <limits>
#include <string_view>
#include <utility>

namespace lumiwren {

namespace {

/// What an X server inside a Wayland session calls its monitors begins with this. It has the pixels of X
/// clients only, and none on its root window.
constexpr std::string_view rootlessMonitor = "XWAYLAND";

bool hasRootlessMonitor(xcb_connection_t *connection, xcb_window_t root) {
  const auto question = xcb_randr_get_monitors(connection, root, 1);
  const XReply<xcb_randr_get_monitors_reply_t> monitors(
      xcb_randr_get_monitors_reply(connection, question, nullptr));
  if (!monitors) {
    return false;
  }
  for (auto position = xcb_randr_get_monitors_monitors_iterator(monitors.get()); position.rem > 0;
       xcb_randr_monitor_info_next(&position)) {
    const auto nameQuestion = xcb_get_atom_name(connection, position.data->name);
    const XReply<xcb_get_atom_name_reply_t> name(xcb_get_atom_name_reply(connection, nameQuestion, nullptr));
    if (name &&
        std::string_view(xcb_get_atom_name_name(name.get()), name->name_len).starts_with(rootlessMonitor)) {
      return true;
    }
  }
  return false;
}

}  // namespace

X11ScreenRecording::X11ScreenRecording(const X11Connection &connection, std::filesystem::path tool)
    : connection_(connection), tool_(std::move(tool)) {}

bool X11ScreenRecording::canRecord() {
  auto *const xcb = connection_.get();
  const auto question = xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, connection_.root(), 0, 0, 1, 1,
                                      std::numeric_limits<std::uint32_t>::max());
  const XReply<xcb_get_image_reply_t> pixel(xcb_get_image_reply(xcb, question, nullptr));
  return pixel && xcb_get_image_data_length(pixel.get()) > 0 && !hasRootlessMonitor(xcb, connection_.root());
}

std::filesystem::path X11ScreenRecording::tool() {
  return tool_;
}

}  // namespace lumiwren
