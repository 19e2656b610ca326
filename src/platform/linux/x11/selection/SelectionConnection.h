#pragma once

#include "platform/linux/x11/XReply.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace lumiwren {

/// A connection to the X server for what moves selections, with the names of atoms. One thread.
class SelectionConnection {
public:
  struct Atoms {
    xcb_atom_t clipboard, targets, timestamp, multiple, atomPair, incr, transfer;
  };

  /// Throws std::runtime_error when there is no X server.
  SelectionConnection();

  xcb_connection_t *get() const { return connection_.get(); }
  const Atoms &atoms() const { return atoms_; }
  bool broken() const { return xcb_connection_has_error(get()) != 0; }

  /// A window that is never seen, with property events selected. It lives as long as the connection.
  xcb_window_t createWindow();
  xcb_window_t owner(xcb_atom_t selection);

  /// One trip to the server for everything that is not known yet.
  std::vector<xcb_atom_t> intern(const std::vector<std::string> &names);
  /// Likewise; an empty name for what is no atom.
  std::vector<std::string> names(const std::vector<xcb_atom_t> &atoms);

private:
  void remember(const std::string &name, xcb_atom_t atom);

  struct Disconnect {
    void operator()(xcb_connection_t *connection) const noexcept { xcb_disconnect(connection); }
  };
  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  xcb_window_t root_ = XCB_NONE;
  Atoms atoms_{};
  std::unordered_map<std::string, xcb_atom_t> atomOf_;
  std::unordered_map<xcb_atom_t, std::string> nameOf_;
};

}  // namespace lumiwren
