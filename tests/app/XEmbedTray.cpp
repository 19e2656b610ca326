#include "app/XEmbedTray.h"

#include <QObject>

#include <cstdlib>
#include <memory>

namespace lumiwren::testing {
namespace {

constexpr uint32_t requestDock = 0;
constexpr uint32_t side = 24;

}  // namespace

XEmbedTray::XEmbedTray(const std::string &display)
    : screen_(display),
      opcode_(screen_.atom("_NET_SYSTEM_TRAY_OPCODE")),
      window_(xcb_generate_id(screen_.connection())),
      readable_(xcb_get_file_descriptor(screen_.connection()), QSocketNotifier::Read) {
  xcb_connection_t *const connection = screen_.connection();
  const uint32_t values[] = {0xffffffff, 1, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY};
  xcb_create_window(connection, XCB_COPY_FROM_PARENT, window_, screen_.root(), 0, 0, side, side, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
  xcb_map_window(connection, window_);
  const xcb_atom_t selection = screen_.atom("_NET_SYSTEM_TRAY_S0");
  xcb_set_selection_owner(connection, window_, selection, XCB_CURRENT_TIME);
  xcb_client_message_event_t manager{};
  manager.response_type = XCB_CLIENT_MESSAGE;
  manager.format = 32;
  manager.window = screen_.root();
  manager.type = screen_.atom("MANAGER");
  manager.data.data32[1] = selection;
  manager.data.data32[2] = window_;
  xcb_send_event(connection, 0, screen_.root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                 reinterpret_cast<const char *>(&manager));
  xcb_flush(connection);
  QObject::connect(&readable_, &QSocketNotifier::activated, &readable_, [this] { readEvents(); });
}

bool XEmbedTray::hasIcon() {
  // What came in front of the answer to a request does not make the socket readable again.
  readEvents();
  return !icons_.empty();
}

bool XEmbedTray::showsColour(QRgb colour) {
  return hasIcon() && screen_.pixels(colour) > 50;
}

void XEmbedTray::readEvents() {
  while (const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event{
      xcb_poll_for_event(screen_.connection()), &std::free}) {
    const auto type = event->response_type & 0x7f;
    if (type == XCB_CLIENT_MESSAGE) {
      const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(*event);
      if (message.type == opcode_ && message.data.data32[1] == requestDock) {
        dock(message.data.data32[2]);
      }
    } else if (type == XCB_DESTROY_NOTIFY) {
      icons_.erase(reinterpret_cast<const xcb_destroy_notify_event_t &>(*event).window);
    } else if (type == 0) {
      // An icon that went before the tray could take it.
      icons_.erase(reinterpret_cast<const xcb_generic_error_t &>(*event).resource_id);
    }
  }
}

void XEmbedTray::dock(xcb_window_t icon) {
  xcb_connection_t *const connection = screen_.connection();
  const uint32_t size[] = {side, side};
  xcb_reparent_window(connection, icon, window_, 0, 0);
  xcb_configure_window(connection, icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
  xcb_map_window(connection, icon);
  xcb_flush(connection);
  icons_.insert(icon);
}

}  // namespace lumiwren::testing
