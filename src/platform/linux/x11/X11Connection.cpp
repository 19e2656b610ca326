#include "platform/linux/x11/X11Connection.h"

namespace lumiwren {

X11Connection::X11Connection() {
  int screen = 0;
  connection_.reset(xcb_connect(nullptr, &screen));
  if (!isUsable()) {
    return;
  }
  screenNumber_ = screen;
  const xcb_setup_t *setup = xcb_get_setup(get());
  resourceMask_ = setup->resource_id_mask;
  auto screens = xcb_setup_roots_iterator(setup);
  for (; screen > 0 && screens.rem > 1; --screen) {
    xcb_screen_next(&screens);
  }
  root_ = screens.data->root;
}

xcb_intern_atom_cookie_t X11Connection::askAtom(std::string_view name) const {
  return xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t X11Connection::atom(xcb_intern_atom_cookie_t cookie) const {
  const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(get(), cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace lumiwren
