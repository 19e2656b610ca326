#pragma once

#include "platform/linux/x11/XReply.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace lumiwren {

/// A connection to the X server that DISPLAY names. Questions may be asked on any thread. Without a server
/// every question is answered by an empty reply.
class X11Connection {
public:
  X11Connection();

  xcb_connection_t *get() const { return connection_.get(); }
  bool isUsable() const { return xcb_connection_has_error(get()) == 0; }
  /// The screen's number and its root window; 0 and XCB_NONE without a server.
  int screenNumber() const { return screenNumber_; }
  xcb_window_t root() const { return root_; }
  /// What is left of a window's identifier when the part that its client chose is taken off; the same for
  /// all windows of one client.
  std::uint32_t resourceBase(xcb_window_t window) const { return window & ~resourceMask_; }

  xcb_intern_atom_cookie_t askAtom(std::string_view name) const;
  /// XCB_ATOM_NONE without a server.
  xcb_atom_t atom(xcb_intern_atom_cookie_t cookie) const;

private:
  struct Disconnect {
    void operator()(xcb_connection_t *connection) const noexcept { xcb_disconnect(connection); }
  };
  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  int screenNumber_ = 0;
  xcb_window_t root_ = XCB_NONE;
  std::uint32_t resourceMask_ = 0;
};

}  // namespace lumiwren
