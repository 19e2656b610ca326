#include "platform/linux/x11/selection/SelectionServer.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>

namespace lumiwren {

using namespace std::chrono_literals;

namespace {

// Large enough that a picture takes few rounds, small enough that the server has not much to hold for a
// requestor that does not take it.
constexpr std::size_t largestIncrement = std::size_t{256} << 10;
constexpr std::size_t requestOverhead = 64;
constexpr auto requestorPatience = 30s;
// More pairs than this in one request are no request that anybody makes.
constexpr std::uint32_t largestMultiple = 1024;

}  // namespace

SelectionServer::SelectionServer(SelectionConnection &connection)
    : connection_(connection), window_(connection.createWindow()) {
  const std::size_t request = std::size_t{xcb_get_maximum_request_length(connection_.get())} * 4;
  increment_ = std::min(largestIncrement, request - requestOverhead) & ~std::size_t{3};
}

bool SelectionServer::own(PasteboardContents contents) {
  std::vector<std::string> names;
  for (const auto &item : contents) {
    names.push_back(item.type);
    names.push_back(item.encoding.empty() ? item.type : item.encoding);
  }
  const auto atoms = connection_.intern(names);
  auto offer = std::make_shared<Offer>();
  for (std::size_t index = 0; index < contents.size(); ++index) {
    auto &item = contents[index];
    offer->entries.push_back({atoms[2 * index], atoms[2 * index + 1], item.unit, std::move(item.bytes)});
  }
  offer->since = serverTime();
  xcb_set_selection_owner(connection_.get(), window_, connection_.atoms().clipboard, offer->since);
  const bool agreed = connection_.owner(connection_.atoms().clipboard) == window_;
  offer_ = agreed ? std::move(offer) : nullptr;
  return agreed;
}

xcb_timestamp_t SelectionServer::serverTime() {
  // The server tells its time when a property changes, if only by nothing.
  xcb_change_property(connection_.get(), XCB_PROP_MODE_APPEND, window_, connection_.atoms().transfer,
                      XCB_ATOM_INTEGER, 32, 0, nullptr);
  xcb_flush(connection_.get());
  while (const XReply<xcb_generic_event_t> event{xcb_wait_for_event(connection_.get())}) {
    const auto &change = reinterpret_cast<const xcb_property_notify_event_t &>(*event);
    if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY && change.window == window_) {
      return change.time;
    }
    handle(*event);
  }
  throw std::runtime_error("the X server has gone");
}

void SelectionServer::handle(const xcb_generic_event_t &event) {
  switch (event.response_type & 0x7F) {
    case XCB_SELECTION_REQUEST:
      requested(reinterpret_cast<const xcb_selection_request_event_t &>(event));
      break;
    case XCB_SELECTION_CLEAR:
      // May tell of an ownership that we have renewed since.
      if (connection_.owner(connection_.atoms().clipboard) != window_) {
        offer_.reset();
      }
      break;
    case XCB_PROPERTY_NOTIFY:
      propertyDeleted(reinterpret_cast<const xcb_property_notify_event_t &>(event));
      break;
    case XCB_DESTROY_NOTIFY:
      forget(reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window);
      break;
    case 0:
      // The requestor had gone before we could ask to be told.
      forget(reinterpret_cast<const xcb_generic_error_t &>(event).resource_id);
      break;
    default:
      break;
  }
}

void SelectionServer::requested(const xcb_selection_request_event_t &event) {
  // Obsolete clients give no property and mean the target's name.
  const xcb_atom_t property = event.property == XCB_ATOM_NONE ? event.target : event.property;
  const bool ours = offer_ && event.owner == window_ && event.selection == connection_.atoms().clipboard;
  // Times wrap around after 49 days.
  const bool intime =
      event.time == XCB_CURRENT_TIME || (ours && static_cast<std::int32_t>(event.time - offer_->since) >= 0);
  xcb_selection_notify_event_t answer{};
  answer.response_type = XCB_SELECTION_NOTIFY;
  answer.time = event.time;
  answer.requestor = event.requestor;
  answer.selection = event.selection;
  answer.target = event.target;
  answer.property = XCB_ATOM_NONE;
  if (ours && intime) {
    if (event.target == connection_.atoms().multiple) {
      if (auto pairs = readPairs(event.requestor, event.property)) {
        giveEach(event.requestor, event.property, *std::move(pairs));
        answer.property = event.property;
      }
    } else if (give(event.requestor, event.target, property)) {
      answer.property = property;
    }
  }
  xcb_send_event(connection_.get(), 0, event.requestor, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char *>(&answer));
}

std::optional<std::vector<xcb_atom_t>> SelectionServer::readPairs(xcb_window_t requestor,
                                                                  xcb_atom_t property) {
  const XReply<xcb_get_property_reply_t> reply(
      xcb_get_property_reply(connection_.get(),
                             xcb_get_property(connection_.get(), 0, requestor, property,
                                              XCB_GET_PROPERTY_TYPE_ANY, 0, 2 * largestMultiple),
                             nullptr));
  if (!reply || reply->format != 32 || reply->bytes_after != 0 || reply->value_len % 2 != 0) {
    return std::nullopt;
  }
  const auto *const atoms = static_cast<const xcb_atom_t *>(xcb_get_property_value(reply.get()));
  return std::vector<xcb_atom_t>(atoms, atoms + reply->value_len);
}

void SelectionServer::giveEach(xcb_window_t requestor, xcb_atom_t property, std::vector<xcb_atom_t> pairs) {
  for (std::size_t index = 0; index < pairs.size(); index += 2) {
    if (pairs[index + 1] == XCB_ATOM_NONE || !give(requestor, pairs[index], pairs[index + 1])) {
      // So a requestor learns what it does not get.
      pairs[index + 1] = XCB_ATOM_NONE;
    }
  }
  putAtoms(requestor, property, connection_.atoms().atomPair, pairs);
}

bool SelectionServer::give(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property) {
  const auto &atoms = connection_.atoms();
  if (target == atoms.targets) {
    std::vector<xcb_atom_t> targets{atoms.targets, atoms.timestamp, atoms.multiple};
    for (const auto &entry : offer_->entries) {
      targets.push_back(entry.target);
    }
    putAtoms(requestor, property, XCB_ATOM_ATOM, targets);
    return true;
  }
  if (target == atoms.timestamp) {
    putAtoms(requestor, property, XCB_ATOM_INTEGER, {offer_->since});
    return true;
  }
  const auto entry = std::find_if(offer_->entries.begin(), offer_->entries.end(),
                                  [target](const Entry &candidate) { return candidate.target == target; });
  if (entry == offer_->entries.end()) {
    return false;
  }
  if (entry->bytes.size() <= increment_) {
    put(requestor, property, entry->type, entry->unit, entry->bytes.data(), entry->bytes.size());
    return true;
  }
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_.get(), requestor, XCB_CW_EVENT_MASK, &events);
  // A requestor that asks again for the same place has given the first transfer up.
  std::erase_if(transfers_, [=](const Transfer &transfer) {
    return transfer.requestor == requestor && transfer.property == property;
  });
  transfers_.push_back({requestor, property, offer_, &*entry, 0, Clock::now() + requestorPatience});
  putAtoms(requestor, property, atoms.incr, {static_cast<std::uint32_t>(entry->bytes.size())});
  return true;
}

void SelectionServer::put(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, std::uint8_t unit,
                          const std::uint8_t *bytes, std::size_t size) {
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property, type,
                      static_cast<std::uint8_t>(unit * 8), static_cast<std::uint32_t>(size / unit), bytes);
}

void SelectionServer::putAtoms(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type,
                               const std::vector<xcb_atom_t> &atoms) {
  xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, requestor, property, type, 32,
                      static_cast<std::uint32_t>(atoms.size()), atoms.data());
}

void SelectionServer::propertyDeleted(const xcb_property_notify_event_t &event) {
  if (event.state != XCB_PROPERTY_DELETE) {
    return;
  }
  const auto transfer = std::find_if(transfers_.begin(), transfers_.end(), [&](const Transfer &candidate) {
    return candidate.requestor == event.window && candidate.property == event.atom;
  });
  if (transfer == transfers_.end()) {
    return;
  }
  const auto &bytes = transfer->entry->bytes;
  const auto size = std::min(increment_, bytes.size() - transfer->sent);
  put(event.window, event.atom, transfer->entry->type, transfer->entry->unit, bytes.data() + transfer->sent,
      size);
  transfer->sent += size;
  transfer->deadline = Clock::now() + requestorPatience;
  if (size == 0) {  // An increment of nothing is the end.
    end(transfer);
  }
}

std::list<SelectionServer::Transfer>::iterator SelectionServer::end(std::list<Transfer>::iterator transfer) {
  const auto requestor = transfer->requestor;
  const auto next = transfers_.erase(transfer);
  if (std::none_of(transfers_.begin(), transfers_.end(),
                   [requestor](const Transfer &other) { return other.requestor == requestor; })) {
    const std::uint32_t events = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.get(), requestor, XCB_CW_EVENT_MASK, &events);
  }
  return next;
}

void SelectionServer::forget(xcb_window_t requestor) {
  std::erase_if(transfers_,
                [requestor](const Transfer &transfer) { return transfer.requestor == requestor; });
}

std::optional<SelectionServer::Clock::time_point> SelectionServer::nextDeadline() const {
  const auto first = std::min_element(
      transfers_.begin(), transfers_.end(),
      [](const Transfer &one, const Transfer &other) { return one.deadline < other.deadline; });
  return first == transfers_.end() ? std::nullopt : std::optional(first->deadline);
}

void SelectionServer::expire(Clock::time_point now) {
  for (auto transfer = transfers_.begin(); transfer != transfers_.end();) {
    transfer = transfer->deadline <= now ? end(transfer) : std::next(transfer);
  }
}

}  // namespace lumiwren
