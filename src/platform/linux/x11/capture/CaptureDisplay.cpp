#include "platform/linux/x11/capture/CaptureDisplay.h"

#include "platform/linux/x11/capture/DisplayScale.h"

#include <xcb/randr.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace lumiwren {
namespace {

const xcb_query_extension_reply_t &extension(xcb_connection_t *connection, xcb_extension_t &id,
                                             const char *name) {
  const auto *reply = xcb_get_extension_data(connection, &id);
  if (reply == nullptr || reply->present == 0) {
    throw std::runtime_error(std::string("the display lacks ") + name);
  }
  return *reply;
}

std::vector<CaptureMonitor> monitorsOf(const xcb_randr_get_monitors_reply_t *reply, const PixelRect &whole) {
  std::vector<CaptureMonitor> result;
  auto position = reply == nullptr ? xcb_randr_monitor_info_iterator_t{}
                                   : xcb_randr_get_monitors_monitors_iterator(reply);
  for (; position.rem > 0; xcb_randr_monitor_info_next(&position)) {
    const auto &info = *position.data;
    const PixelRect frame = intersection(whole, {info.x, info.y, info.width, info.height});
    if (!isEmpty(frame)) {
      result.push_back({frame, suggestedScale(info.width, static_cast<int>(info.width_in_millimeters))});
    }
  }
  return result;
}

std::string environmentVariable(const char *name) {
  const char *value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

CaptureDisplay::CaptureDisplay(const X11Connection &connection)
    : connection_(connection),
      lockQuestion_(
          connection.askAtom("_LUMIWREN_SCREENCAPTURE_S" + std::to_string(connection.screenNumber()))),
      opacityQuestion_(connection.askAtom("_NET_WM_WINDOW_OPACITY")),
      bypassQuestion_(connection.askAtom("_NET_WM_BYPASS_COMPOSITOR")) {
  for (auto *id : {&xcb_render_id, &xcb_randr_id, &xcb_input_id, &xcb_xfixes_id, &xcb_shm_id}) {
    xcb_prefetch_extension_data(connection.get(), id);
  }
  xcb_flush(connection.get());
}

void CaptureDisplay::read(const xcb_screen_t &screen) {
  xcb_connection_t *server = connection_.get();
  lock_ = connection_.atom(lockQuestion_);
  opacity_ = connection_.atom(opacityQuestion_);
  bypassCompositor_ = connection_.atom(bypassQuestion_);
  extension(server, xcb_render_id, "RENDER");
  extension(server, xcb_xfixes_id, "XFIXES");
  layoutEvents_ = extension(server, xcb_randr_id, "RANDR").first_event;
  inputEvents_ = extension(server, xcb_input_id, "XINPUT").major_opcode;

  // A client that has not told its version of an extension is served an old one.
  const auto renderVersion = xcb_render_query_version(server, 0, 11);
  const auto layoutVersion = xcb_randr_query_version(server, 1, 5);
  const auto inputVersion = xcb_input_xi_query_version(server, 2, 2);
  const auto fixesVersion = xcb_xfixes_query_version(server, 4, 0);
  const auto formatsQuestion = xcb_render_query_pict_formats(server);
  const auto monitorsQuestion = xcb_randr_get_monitors(server, screen.root, 1);
  constexpr std::uint32_t mostResources = 1U << 16U;  // in units of four bytes
  const auto resourcesQuestion =
      xcb_get_property(server, 0, screen.root, XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 0, mostResources);
  const auto lockQuestion = xcb_get_selection_owner(server, lock_);
  const auto pointerQuestion = xcb_query_pointer(server, screen.root);

  const XReply<xcb_render_query_version_reply_t> render(
      xcb_render_query_version_reply(server, renderVersion, nullptr));
  const XReply<xcb_randr_query_version_reply_t> layout(
      xcb_randr_query_version_reply(server, layoutVersion, nullptr));
  const XReply<xcb_input_xi_query_version_reply_t> input(
      xcb_input_xi_query_version_reply(server, inputVersion, nullptr));
  const XReply<xcb_xfixes_query_version_reply_t> fixes(
      xcb_xfixes_query_version_reply(server, fixesVersion, nullptr));
  const XReply<xcb_render_query_pict_formats_reply_t> formats(
      xcb_render_query_pict_formats_reply(server, formatsQuestion, nullptr));
  const XReply<xcb_randr_get_monitors_reply_t> monitors(
      xcb_randr_get_monitors_reply(server, monitorsQuestion, nullptr));
  const XReply<xcb_get_property_reply_t> resources(
      xcb_get_property_reply(server, resourcesQuestion, nullptr));
  const XReply<xcb_get_selection_owner_reply_t> owner(
      xcb_get_selection_owner_reply(server, lockQuestion, nullptr));
  const XReply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(server, pointerQuestion, nullptr));
  if (!render || !layout || !fixes || !formats || !owner || !pointer) {
    throw std::runtime_error("the display does not answer");
  }
  if (!input || input->major_version < 2) {
    throw std::runtime_error("the display lacks XINPUT 2");
  }
  locked_ = owner->owner != XCB_NONE;
  pointer_ = {pointer->root_x, pointer->root_y};
  readFormats(screen, formats.get());

  std::string_view text;
  if (resources) {
    text = {static_cast<const char *>(xcb_get_property_value(resources.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(resources.get()))};
  }
  const auto chosen = chosenScale(text, environmentVariable("QT_SCALE_FACTOR"));
  whole_ = {0, 0, screen.width_in_pixels, screen.height_in_pixels};
  monitors_ = monitorsOf(monitors.get(), whole_);
  if (monitors_.empty()) {
    monitors_.push_back({whole_, suggestedScale(whole_.width, screen.width_in_millimeters)});
  }
  for (CaptureMonitor &monitor : monitors_) {
    monitor.scale = chosen.value_or(monitor.scale);
  }
}

bool CaptureDisplay::isRearranged() const {
  xcb_connection_t *server = connection_.get();
  const XReply<xcb_randr_get_monitors_reply_t> reply(
      xcb_randr_get_monitors_reply(server, xcb_randr_get_monitors(server, connection_.root(), 1), nullptr));
  const auto now = monitorsOf(reply.get(), whole_);
  return !now.empty() && !std::equal(now.begin(), now.end(), monitors_.begin(), monitors_.end(),
                                     [](const CaptureMonitor &one, const CaptureMonitor &other) {
                                       return one.frame == other.frame;
                                     });
}

void CaptureDisplay::readFormats(const xcb_screen_t &screen,
                                 const xcb_render_query_pict_formats_reply_t *reply) {
  for (auto screens = xcb_render_query_pict_formats_screens_iterator(reply); screens.rem > 0;
       xcb_render_pictscreen_next(&screens)) {
    for (auto depths = xcb_render_pictscreen_depths_iterator(screens.data); depths.rem > 0;
         xcb_render_pictdepth_next(&depths)) {
      for (auto visuals = xcb_render_pictdepth_visuals_iterator(depths.data); visuals.rem > 0;
           xcb_render_pictvisual_next(&visuals)) {
        if (visuals.data->visual == screen.root_visual) {
          screenFormat_ = visuals.data->format;
        }
      }
    }
  }
  for (auto formats = xcb_render_query_pict_formats_formats_iterator(reply); formats.rem > 0;
       xcb_render_pictforminfo_next(&formats)) {
    const auto &format = *formats.data;
    const auto &direct = format.direct;
    if (format.depth == 32 && format.type == XCB_RENDER_PICT_TYPE_DIRECT && direct.alpha_mask == 0xff &&
        direct.alpha_shift == 24 && direct.red_shift == 16 && direct.green_shift == 8 &&
        direct.blue_shift == 0) {
      spriteFormat_ = format.id;
    }
  }
  if (screenFormat_ == XCB_NONE || spriteFormat_ == XCB_NONE) {
    throw std::runtime_error("the display cannot blend pictures on this screen");
  }
}

}  // namespace lumiwren
