#include "platform/linux/x11/X11Screens.h"

#include <xcb/randr.h>

#include <algorithm>
#include <limits>

namespace lumiwren {
namespace {

constexpr std::uint32_t wholeProperty = 0x10000;  // in units of four bytes; more than any window list has

xcb_get_property_cookie_t askNumbers(const X11Connection &connection, xcb_window_t window, xcb_atom_t name) {
  return xcb_get_property(connection.get(), 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, wholeProperty);
}

/// Empty when there is no such property, or when it is no list of 32-bit numbers.
std::vector<std::uint32_t> numbers(const X11Connection &connection, xcb_get_property_cookie_t question) {
  const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection.get(), question, nullptr));
  if (!reply || reply->format != 32) {
    return {};
  }
  const auto *values = static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get()));
  return {values, values + reply->value_len};
}

PixelRect pixelRect(const xcb_get_geometry_reply_t &geometry) {
  return {geometry.x, geometry.y, geometry.width, geometry.height};
}

}  // namespace

X11Screens::X11Screens(const X11Connection &connection, double pixelsPerPoint)
    : connection_(connection), pixelsPerPoint_(pixelsPerPoint) {
  const auto clientList = connection_.askAtom("_NET_CLIENT_LIST");
  const auto strut = connection_.askAtom("_NET_WM_STRUT");
  const auto strutPartial = connection_.askAtom("_NET_WM_STRUT_PARTIAL");
  const auto workArea = connection_.askAtom("_NET_WORKAREA");
  const auto currentDesktop = connection_.askAtom("_NET_CURRENT_DESKTOP");
  atoms_ = {connection_.atom(clientList), connection_.atom(strut), connection_.atom(strutPartial),
            connection_.atom(workArea), connection_.atom(currentDesktop)};
}

Point X11Screens::mouseLocation() {
  const auto question = xcb_query_pointer(connection_.get(), connection_.root());
  const auto monitors = layout(connection_);
  const XReply<xcb_query_pointer_reply_t> pointer(
      xcb_query_pointer_reply(connection_.get(), question, nullptr));
  if (!monitors || !pointer) {
    return {};
  }
  return DesktopCoordinates{monitors->primary(), pixelsPerPoint_}.point(pointer->root_x, pointer->root_y);
}

std::optional<Rect> X11Screens::mainScreenVisibleFrame() {
  // All at once: the panel waits for this, and each wait for the server takes a while.
  const auto focusQuestion = xcb_get_input_focus(connection_.get());
  const auto clientsQuestion = askNumbers(connection_, connection_.root(), atoms_.clientList);
  const auto areasQuestion = askNumbers(connection_, connection_.root(), atoms_.workArea);
  const auto desktopQuestion = askNumbers(connection_, connection_.root(), atoms_.currentDesktop);
  const auto monitors = layout(connection_);
  const XReply<xcb_get_input_focus_reply_t> focus(
      xcb_get_input_focus_reply(connection_.get(), focusQuestion, nullptr));
  const auto clients = numbers(connection_, clientsQuestion);
  const auto areas = numbers(connection_, areasQuestion);
  const auto desktop = numbers(connection_, desktopQuestion);
  if (!monitors) {
    return std::nullopt;
  }
  const auto strutQuestions = askForStruts(clients);
  const DesktopCoordinates coordinates{monitors->primary(), pixelsPerPoint_};
  if (monitors->monitors.size() <= 1) {
    // The work area is one rectangle for all monitors, so it says something about a single one only.
    const PixelRect visible = monitors->visibleFrame(monitors->primary(), struts(strutQuestions));
    return coordinates.rect(intersection(visible, workArea(areas, desktop).value_or(visible)));
  }
  // The way from the focused window up takes one wait for each step.
  const PixelRect monitor = monitors->main(focus ? topWindow(focus->focus) : std::nullopt);
  return coordinates.rect(monitors->visibleFrame(monitor, struts(strutQuestions)));
}

std::optional<MonitorLayout> X11Screens::layout(const X11Connection &connection) {
  const auto monitorsQuestion = xcb_randr_get_monitors(connection.get(), connection.root(), 1);
  const auto screenQuestion = xcb_get_geometry(connection.get(), connection.root());
  const XReply<xcb_randr_get_monitors_reply_t> monitors(
      xcb_randr_get_monitors_reply(connection.get(), monitorsQuestion, nullptr));
  const XReply<xcb_get_geometry_reply_t> screen(
      xcb_get_geometry_reply(connection.get(), screenQuestion, nullptr));
  if (!screen) {
    return std::nullopt;
  }
  MonitorLayout layout{.screen = pixelRect(*screen), .monitors = {}, .primaryIndex = {}};
  if (monitors) {
    for (auto position = xcb_randr_get_monitors_monitors_iterator(monitors.get()); position.rem > 0;
         xcb_randr_monitor_info_next(&position)) {
      if (position.data->primary && !layout.primaryIndex) {
        layout.primaryIndex = layout.monitors.size();
      }
      layout.monitors.push_back(
          {position.data->x, position.data->y, position.data->width, position.data->height});
    }
  }
  return layout;
}

std::optional<PixelRect> X11Screens::topWindow(xcb_window_t focus) const {
  xcb_connection_t *connection = connection_.get();
  if (focus == XCB_NONE || focus == XCB_INPUT_FOCUS_POINTER_ROOT) {
    return std::nullopt;
  }
  // The focus may be in a tiny window inside the application's; the one below the root is what is seen.
  for (xcb_window_t window = focus; window != connection_.root();) {
    const XReply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
    if (!tree || tree->parent == XCB_NONE) {
      return std::nullopt;
    }
    if (tree->parent == connection_.root()) {
      const XReply<xcb_get_geometry_reply_t> geometry(
          xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
      return geometry ? std::optional(pixelRect(*geometry)) : std::nullopt;
    }
    window = tree->parent;
  }
  return std::nullopt;
}

std::vector<X11Screens::StrutQuestion> X11Screens::askForStruts(
    const std::vector<xcb_window_t> &clients) const {
  std::vector<StrutQuestion> questions;
  questions.reserve(clients.size());
  for (const xcb_window_t client : clients) {
    questions.push_back({askNumbers(connection_, client, atoms_.strutPartial),
                         askNumbers(connection_, client, atoms_.strut)});
  }
  xcb_flush(connection_.get());
  return questions;
}

std::vector<Strut> X11Screens::struts(const std::vector<StrutQuestion> &questions) const {
  std::vector<Strut> result;
  for (const auto &question : questions) {
    const auto partial = numbers(connection_, question.partial);
    const auto plain = numbers(connection_, question.plain);
    Strut strut;
    if (partial.size() == Strut::Count) {
      std::copy(partial.begin(), partial.end(), strut.values.begin());
      result.push_back(strut);
    } else if (plain.size() == Strut::LeftStartY) {
      // The older form has no ends: the strut is as long as the screen's edge.
      std::copy(plain.begin(), plain.end(), strut.values.begin());
      for (const auto end : {Strut::LeftEndY, Strut::RightEndY, Strut::TopEndX, Strut::BottomEndX}) {
        strut.values.at(end) = std::numeric_limits<std::uint16_t>::max();
      }
      result.push_back(strut);
    }
  }
  return result;
}

std::optional<PixelRect> X11Screens::workArea(const std::vector<std::uint32_t> &areas,
                                              const std::vector<std::uint32_t> &desktop) {
  constexpr std::size_t fields = 4;
  const std::size_t start = desktop.empty() ? 0 : desktop.front() * fields;
  if (areas.size() < start + fields) {
    return std::nullopt;
  }
  return PixelRect{static_cast<int>(areas[start]), static_cast<int>(areas[start + 1]),
                   static_cast<int>(areas[start + 2]), static_cast<int>(areas[start + 3])};
}

}  // namespace lumiwren
