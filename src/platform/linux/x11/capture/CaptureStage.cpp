#include "platform/linux/x11/capture/CaptureStage.h"

#include <xcb/randr.h>

#include <poll.h>

#include <chrono>
#include <stdexcept>

namespace lumiwren {
namespace {

using Clock = std::chrono::steady_clock;

// Nobody is left in front of a picture that does not react.
constexpr std::chrono::seconds patienceForPointer{5};

}  // namespace

const X11Connection &CaptureStage::usable(const X11Connection &connection) {
  if (!connection.isUsable()) {
    throw std::runtime_error("the display cannot be reached");
  }
  return connection;
}

CaptureStage::CaptureStage() : display_(usable(connection_)), frozen_(connection_) {
  display_.read(frozen_.screen());
  PixelRegion nowhere{frozen_.frame()};
  for (const CaptureMonitor &monitor : display_.monitors()) {
    nowhere = subtracted(nowhere, monitor.frame);
  }
  frozen_.blacken(nowhere);
}

bool CaptureStage::run(const Sprite &cursor, const Handler &handler, const Painter &painter) {
  xcb_connection_t *server = connection_.get();
  window_.emplace(display_, frozen_, cursor);
  xcb_set_selection_owner(server, window_->id(), display_.lock(), XCB_CURRENT_TIME);
  xcb_randr_select_input(server, connection_.root(), XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
  // Before the window is shown: a user who is quick may press already.
  input_.emplace(display_, window_->cursor());
  input_->take();
  window_->show(painter(input_->hidesPointer()));

  const auto giveUp = Clock::now() + patienceForPointer;
  auto nextAttempt = Clock::now();
  bool outdated = false;
  for (;;) {
    XReply<xcb_generic_event_t> event(xcb_poll_for_event(server));
    // Looking for the answer may bring events, too.
    const bool ready = event == nullptr && outdated && window_->isReady();
    if (!event) {
      event.reset(xcb_poll_for_queued_event(server));
    }
    if (event) {
      if (endsStage(*event)) {
        return false;
      }
      window_->handle(*event);
      if (const auto action = input_->event(*event)) {
        outdated = true;
        if (!handler(*action)) {
          return true;
        }
      }
      continue;
    }
    if (!connection_.isUsable()) {
      throw std::runtime_error("the display has gone");
    }
    if (ready) {
      window_->draw(painter(input_->hidesPointer()));
      outdated = false;
    }
    const auto pause = input_->pause();
    if (pause && Clock::now() >= nextAttempt) {
      input_->take();
      outdated = true;
      nextAttempt = Clock::now() + *pause;
      if (!input_->hasPointer() && Clock::now() >= giveUp) {
        throw std::runtime_error("another program holds the pointer");
      }
      continue;
    }
    if (!ready) {
      waitForServer(pause);
    }
  }
}

bool CaptureStage::endsStage(const xcb_generic_event_t &event) const {
  const int type = event.response_type & 0x7f;
  return (type == XCB_CONFIGURE_NOTIFY &&
          reinterpret_cast<const xcb_configure_notify_event_t &>(event).window == connection_.root()) ||
         // The server also tells of what it only finds out when it is asked for the first time.
         (type == display_.layoutEvents() + XCB_RANDR_NOTIFY && display_.isRearranged()) ||
         (type == XCB_SELECTION_CLEAR &&
          reinterpret_cast<const xcb_selection_clear_event_t &>(event).selection == display_.lock());
}

void CaptureStage::waitForServer(std::optional<std::chrono::milliseconds> limit) const {
  pollfd server{.fd = xcb_get_file_descriptor(connection_.get()), .events = POLLIN, .revents = 0};
  poll(&server, 1, limit ? static_cast<int>(limit->count()) : -1);
}

void CaptureStage::waitForRelease() {
  const auto end = Clock::now() + std::chrono::seconds(1);
  while (input_->isHeld() && connection_.isUsable()) {
    if (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
      input_->event(*event);
      continue;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) {
      return;
    }
    waitForServer(left);
  }
}

}  // namespace lumiwren
