#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace lumiwren::testing {

struct FreeByC {
  void operator()(void *memory) const { std::free(memory); }
};
template <typename T>
using Owned = std::unique_ptr<T, FreeByC>;

/// The bare X client that the selection peers of the tests are made of. It shares no code with what is
/// tested.
class SelectionClient {
public:
  SelectionClient() : connection(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(connection) != 0) {
      throw std::runtime_error("no X server");
    }
    window = createWindow();
  }
  SelectionClient(const SelectionClient &) = delete;
  SelectionClient &operator=(const SelectionClient &) = delete;
  ~SelectionClient() { xcb_disconnect(connection); }

  xcb_window_t createWindow() const {
    const auto created = xcb_generate_id(connection);
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, created, root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    return created;
  }

  xcb_atom_t atom(std::string_view name) const {
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply->atom;
  }

  std::string name(xcb_atom_t atom) const {
    const Owned<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, atom), nullptr));
    return reply ? std::string(xcb_get_atom_name_name(reply.get()),
                               static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())))
                 : "?";
  }

  /// The next event; the program ends with the X server.
  Owned<xcb_generic_event_t> nextEvent() const {
    xcb_flush(connection);
    Owned<xcb_generic_event_t> event(xcb_wait_for_event(connection));
    if (!event) {
      std::exit(0);
    }
    return event;
  }

  xcb_timestamp_t serverTime() const {
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, window, atom("TIME"), XCB_ATOM_INTEGER, 32, 0,
                        nullptr);
    for (;;) {
      const auto event = nextEvent();
      if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY) {
        return reinterpret_cast<const xcb_property_notify_event_t &>(*event).time;
      }
    }
  }

  xcb_connection_t *connection;
  xcb_window_t window;
};

}  // namespace lumiwren::testing
