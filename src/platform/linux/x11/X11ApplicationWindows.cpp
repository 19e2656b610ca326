#include "platform/linux/x11/X11ApplicationWindows.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace lumiwren {
namespace {

// What asks: a pager, that is, the user.
constexpr std::uint32_t sourcePager = 2;
constexpr std::uint32_t stateRemove = 0;
constexpr std::uint32_t stateAdd = 1;
constexpr std::uint32_t everyDesktop = 0xffffffff;

}  // namespace

X11ApplicationWindows::X11ApplicationWindows(xcb_connection_t *toolkit, const X11Connection &questions)
    : toolkit_(toolkit), questions_(questions) {}

void X11ApplicationWindows::activate(NativeWindow window) {
  const auto xWindow = static_cast<xcb_window_t>(window);
  constexpr std::uint32_t above = XCB_STACK_MODE_ABOVE;
  xcb_configure_window(toolkit_, xWindow, XCB_CONFIG_WINDOW_STACK_MODE, &above);
  ask(window, "_NET_ACTIVE_WINDOW", {sourcePager, XCB_CURRENT_TIME, XCB_NONE});
}

void X11ApplicationWindows::handOverKeyboard(NativeWindow window) {
  // Where the window with the keyboard goes first, the server gives the keyboard to what is below the pointer
  // and tells the window manager, which then gives it to another program. xfwm4 can take the former for the
  // decision of a user: it then does not do what activate() asks, for to its knowledge it is done.
  xcb_set_input_focus(toolkit_, XCB_INPUT_FOCUS_PARENT, static_cast<xcb_window_t>(window), XCB_CURRENT_TIME);
  xcb_flush(toolkit_);
}

void X11ApplicationWindows::setFloating(NativeWindow window) {
  // A window that has had a dialog can lie among ordinary ones and still be in the state that asks for more.
  // Then only a change of that state has an effect.
  const std::uint32_t above = questions_.atom(questions_.askAtom("_NET_WM_STATE_ABOVE"));
  for (const std::uint32_t change : {stateRemove, stateAdd}) {
    ask(window, "_NET_WM_STATE", {change, above, XCB_ATOM_NONE, sourcePager});
  }
  ask(window, "_NET_WM_DESKTOP", {everyDesktop, sourcePager});
}

void X11ApplicationWindows::ask(NativeWindow window, std::string_view message,
                                std::initializer_list<std::uint32_t> data) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = static_cast<xcb_window_t>(window);
  event.type = questions_.atom(questions_.askAtom(message));
  std::copy(data.begin(), data.end(), std::begin(event.data.data32));
  xcb_send_event(toolkit_, 0, questions_.root(),
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char *>(&event));
  xcb_flush(toolkit_);
}

}  // namespace lumiwren
