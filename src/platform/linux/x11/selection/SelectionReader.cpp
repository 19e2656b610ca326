#include "platform/linux/x11/selection/SelectionReader.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace lumiwren {

namespace {

// More than any picture takes; an owner that sends without end must not take the memory.
constexpr std::size_t maximumBatchBytes = std::size_t{256} << 20;
constexpr std::uint32_t wholeProperty = std::numeric_limits<std::int32_t>::max() / 4;

}  // namespace

std::shared_ptr<SelectionBatch> SelectionReader::request(xcb_atom_t selection,
                                                         const std::vector<xcb_atom_t> &targets) {
  auto batch = std::make_shared<SelectionBatch>();
  batch->values.resize(targets.size());
  batch->open = targets.size();
  for (std::size_t index = 0; index < targets.size(); ++index) {
    auto found = std::find_if(requestors_.begin(), requestors_.end(),
                              [](const auto &entry) { return entry.second.state == State::Idle; });
    if (found == requestors_.end()) {
      found = requestors_.emplace(connection_.createWindow(), Requestor{}).first;
    }
    auto &[window, requestor] = *found;
    requestor = {.state = State::Asked, .target = targets[index], .batch = batch, .index = index};
    // No event of the user's stands behind this request whose time could be given.
    const auto cookie = xcb_convert_selection(connection_.get(), window, selection, targets[index],
                                              connection_.atoms().transfer, XCB_CURRENT_TIME);
    if (index == 0) {
      batch->firstRequest = cookie.sequence;
    }
  }
  return batch;
}

void SelectionReader::handle(const xcb_generic_event_t &event) {
  switch (event.response_type & 0x7F) {
    case XCB_SELECTION_NOTIFY:
      answered(reinterpret_cast<const xcb_selection_notify_event_t &>(event));
      break;
    case XCB_PROPERTY_NOTIFY:
      propertyChanged(reinterpret_cast<const xcb_property_notify_event_t &>(event));
      break;
    default:
      break;
  }
}

void SelectionReader::answered(const xcb_selection_notify_event_t &event) {
  const auto found = requestors_.find(event.requestor);
  if (found == requestors_.end() || found->second.state != State::Asked ||
      found->second.target != event.target) {
    return;
  }
  if (event.property == XCB_ATOM_NONE) {
    finish(found->second, false);
  } else {
    fetch(event.requestor, State::Fetching);
  }
}

void SelectionReader::propertyChanged(const xcb_property_notify_event_t &event) {
  const auto found = requestors_.find(event.window);
  if (found == requestors_.end() || event.state != XCB_PROPERTY_NEW_VALUE ||
      event.atom != connection_.atoms().transfer) {
    return;
  }
  switch (found->second.state) {
    case State::BetweenIncrements:
      fetch(event.window, State::FetchingIncrement);
      break;
    case State::Fetching:
    case State::FetchingIncrement:
      // The owner was faster than our reading of the reply that lets it go on.
      found->second.moreCame = true;
      break;
    case State::Idle:
    case State::Asked:
      break;
  }
}

void SelectionReader::fetch(xcb_window_t window, State state) {
  auto &requestor = requestors_.at(window);
  requestor.state = state;
  requestor.moreCame = false;
  // Deleting the property tells the owner to go on.
  fetches_.emplace_back(window, xcb_get_property(connection_.get(), 1, window, connection_.atoms().transfer,
                                                 XCB_GET_PROPERTY_TYPE_ANY, 0, wholeProperty));
}

bool SelectionReader::collect() {
  const auto fetches = std::exchange(fetches_, {});
  for (const auto &[window, cookie] : fetches) {
    const XReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_.get(), cookie, nullptr));
    fetched(window, reply.get());
  }
  return !fetches.empty();
}

void SelectionReader::fetched(xcb_window_t window, const xcb_get_property_reply_t *reply) {
  auto &requestor = requestors_.at(window);
  if (reply == nullptr) {
    finish(requestor, false);
    return;
  }
  if (requestor.state == State::Fetching && reply->type != connection_.atoms().incr) {
    append(requestor, *reply);
    finish(requestor, reply->type != XCB_ATOM_NONE);
    return;
  }
  if (requestor.state == State::FetchingIncrement && reply->type != XCB_ATOM_NONE) {
    append(requestor, *reply);
    if (reply->value_len == 0) {
      finish(requestor, true);
      return;
    }
  }
  if (requestor.state == State::Fetching) {
    makeRoom(requestor, *reply);
  }
  requestor.state = State::BetweenIncrements;
  if (requestor.moreCame) {
    fetch(window, State::FetchingIncrement);
  }
}

void SelectionReader::makeRoom(Requestor &requestor, const xcb_get_property_reply_t &announcement) {
  std::uint32_t size = 0;
  const auto batch = requestor.batch.lock();
  if (!batch || announcement.format != 32 || announcement.value_len != 1) {
    return;
  }
  std::memcpy(&size, xcb_get_property_value(&announcement), sizeof size);
  if (batch->announced + size <= maximumBatchBytes) {
    batch->announced += size;
    requestor.value.bytes.reserve(size);
  }
}

void SelectionReader::append(Requestor &requestor, const xcb_get_property_reply_t &reply) {
  const auto batch = requestor.batch.lock();
  const auto size = static_cast<std::size_t>(xcb_get_property_value_length(&reply));
  if (!batch || batch->bytes + size > maximumBatchBytes) {
    // Nobody wants it any more. The owner is nevertheless heard out, or it would wait for us for ever.
    if (batch) {
      --batch->open;
    }
    requestor.batch.reset();
    requestor.value = {};
    return;
  }
  auto &value = requestor.value;
  // Some owners mark the end of the increments with whatever type comes to hand.
  if (size > 0 || value.type == XCB_ATOM_NONE) {
    value.type = reply.type;
    value.format = reply.format;
  }
  batch->bytes += size;
  const auto *const bytes = static_cast<const std::uint8_t *>(xcb_get_property_value(&reply));
  value.bytes.insert(value.bytes.end(), bytes, bytes + size);
}

void SelectionReader::finish(Requestor &requestor, bool given) {
  if (const auto batch = requestor.batch.lock()) {
    --batch->open;
    if (given) {
      batch->values[requestor.index] = std::move(requestor.value);
    }
  }
  requestor = {};
}

}  // namespace lumiwren
