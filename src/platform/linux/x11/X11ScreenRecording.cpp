#include "platform/linux/x11/X11ScreenRecording.h"

#include "platform/linux/x11/XReply.h"

#include <xcb/xcb.h>

#include <limits>
#include <utility>

namespace lumiwren {

X11ScreenRecording::X11ScreenRecording(const X11Connection &connection, std::filesystem::path tool)
    : connection_(connection), tool_(std::move(tool)) {}

bool X11ScreenRecording::canRecord() {
  auto *const xcb = connection_.get();
  const auto question = xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, connection_.root(), 0, 0, 1, 1,
                                      std::numeric_limits<std::uint32_t>::max());
  const XReply<xcb_get_image_reply_t> pixel(xcb_get_image_reply(xcb, question, nullptr));
  return pixel && xcb_get_image_data_length(pixel.get()) > 0;
}

std::filesystem::path X11ScreenRecording::tool() {
  return tool_;
}

}  // namespace lumiwren
