#pragma once

#include "platform/Pasteboard.h"
#include "platform/linux/x11/selection/SelectionConnection.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace lumiwren {

/// A property as a selection's owner gave it. `format` is bits per unit.
struct SelectionValue {
  xcb_atom_t type = XCB_ATOM_NONE;
  std::uint8_t format = 8;
  Bytes bytes;
};

/// Targets that were asked for together. Dropping it abandons what has not come yet.
struct SelectionBatch {
  std::vector<std::optional<SelectionValue>> values;  // one for each target
  std::size_t open = 0;                               // targets that are neither given nor refused yet
  std::size_t bytes = 0;
  std::size_t announced = 0;       // bytes that are to come in increments, as far as the owner says
  std::uint32_t firstRequest = 0;  // events before this request are older than the batch
};

/// The asking side of selections, at once or in increments (INCR). Never waits for an owner; to be fed with
/// the connection's events. The connection's thread.
class SelectionReader {
public:
  explicit SelectionReader(SelectionConnection &connection) : connection_(connection) {}

  std::shared_ptr<SelectionBatch> request(xcb_atom_t selection, const std::vector<xcb_atom_t> &targets);
  void handle(const xcb_generic_event_t &event);
  /// Fetches what the events since the last call announced. False when there was nothing.
  bool collect();

private:
  enum class State { Idle, Asked, Fetching, BetweenIncrements, FetchingIncrement };

  // Each target has a window of its own, because there are owners that tell increments apart by the window
  // alone. Windows are used again and never destroyed: many an owner does not survive the error that it gets
  // when it answers to a window that is no more.
  struct Requestor {
    State state = State::Idle;
    xcb_atom_t target = XCB_ATOM_NONE;
    std::weak_ptr<SelectionBatch> batch;
    std::size_t index = 0;
    SelectionValue value = {};
    bool moreCame = false;
  };

  void answered(const xcb_selection_notify_event_t &event);
  void propertyChanged(const xcb_property_notify_event_t &event);
  void fetch(xcb_window_t window, State state);
  void fetched(xcb_window_t window, const xcb_get_property_reply_t *reply);
  static void makeRoom(Requestor &requestor, const xcb_get_property_reply_t &announcement);
  void append(Requestor &requestor, const xcb_get_property_reply_t &reply);
  static void finish(Requestor &requestor, bool given);

  SelectionConnection &connection_;
  std::unordered_map<xcb_window_t, Requestor> requestors_;
  std::vector<std::pair<xcb_window_t, xcb_get_property_cookie_t>> fetches_;
};

}  // namespace lumiwren
