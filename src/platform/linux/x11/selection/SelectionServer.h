#pragma once

#include "platform/Pasteboard.h"
#include "platform/linux/x11/selection/SelectionConnection.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <vector>

namespace lumiwren {

/// The owning side of the clipboard. Waits for nobody but the X server: what is large is given in increments
/// (INCR) as fast as each requestor takes them. To be fed with the connection's events; one thread.
class SelectionServer {
public:
  using Clock = std::chrono::steady_clock;

  explicit SelectionServer(SelectionConnection &connection);

  /// Becomes the clipboard's owner, with these contents from now on. False when the server does not agree.
  bool own(PasteboardContents contents);
  bool owns() const { return offer_ != nullptr; }

  void handle(const xcb_generic_event_t &event);

  /// Somebody is still taking what was offered, perhaps by an earlier offer.
  bool isBusy() const { return !transfers_.empty(); }
  /// When expire() is due; empty when it never is.
  std::optional<Clock::time_point> nextDeadline() const;
  /// Lets go of requestors that have taken nothing for too long.
  void expire(Clock::time_point now);

private:
  struct Entry {
    xcb_atom_t target;
    xcb_atom_t type;
    std::uint8_t unit;
    Bytes bytes;
  };
  struct Offer {
    std::vector<Entry> entries;
    xcb_timestamp_t since;
  };
  struct Transfer {
    xcb_window_t requestor;
    xcb_atom_t property;
    std::shared_ptr<const Offer> offer;  // may have been replaced since
    const Entry *entry;
    std::size_t sent;
    Clock::time_point deadline;
  };

  xcb_timestamp_t serverTime();
  void requested(const xcb_selection_request_event_t &event);
  bool give(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
  void giveEach(xcb_window_t requestor, xcb_atom_t property, std::vector<xcb_atom_t> pairs);
  std::optional<std::vector<xcb_atom_t>> readPairs(xcb_window_t requestor, xcb_atom_t property);
  void put(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, std::uint8_t unit,
           const std::uint8_t *bytes, std::size_t size);
  void putAtoms(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                const std::vector<xcb_atom_t> &atoms);
  void propertyDeleted(const xcb_property_notify_event_t &event);
  void forget(xcb_window_t requestor);
  std::list<Transfer>::iterator end(std::list<Transfer>::iterator transfer);

  SelectionConnection &connection_;
  xcb_window_t window_;
  std::size_t increment_;
  std::shared_ptr<const Offer> offer_;
  std::list<Transfer> transfers_;
};

}  // namespace lumiwren
