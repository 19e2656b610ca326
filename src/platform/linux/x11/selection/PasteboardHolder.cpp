#include "platform/linux/x11/selection/PasteboardHolder.h"

#include "platform/linux/x11/selection/PasteboardParcel.h"
#include "platform/linux/x11/selection/SelectionServer.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <optional>

namespace lumiwren {

namespace {

using Clock = SelectionServer::Clock;

// A copy is taken back within a fraction of a second; after this time nothing more is to come of it.
constexpr std::chrono::seconds standbyLimit{10};

class Holder {
public:
  Holder(const FileDescriptor &socket, HolderEnds ends) : socket_(socket), ends_(ends) {}

  void run() {
    while (!connection_.broken()) {
      handleEvents();
      const auto now = Clock::now();
      server_.expire(now);
      const bool needed = server_.owns() || server_.isBusy();
      if (!programThere_ && (!needed || ends_ == HolderEnds::WithTheProgram)) {
        return;
      }
      if (needed) {
        idleSince_.reset();
      } else if (!idleSince_) {
        idleSince_ = now;
      } else if (now - *idleSince_ >= standbyLimit) {
        // Nothing can be sent after this; what was sent just before is still taken.
        shutdown(socket_.get(), SHUT_RD);
        receive();
        programThere_ = false;
        continue;
      }
      sleepUntilSomethingHappens(now);
    }
  }

private:
  void handleEvents() {
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
      server_.handle(*event);
    }
    xcb_flush(connection_.get());
    // Flushing may have read events, for which nothing would wake us.
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_queued_event(connection_.get())}) {
      server_.handle(*event);
      xcb_flush(connection_.get());
    }
  }

  void sleepUntilSomethingHappens(Clock::time_point now) {
    auto deadline = server_.nextDeadline();
    if (idleSince_) {
      deadline = std::min(deadline.value_or(Clock::time_point::max()), *idleSince_ + standbyLimit);
    }
    const auto timeout =
        deadline ? std::max(std::chrono::ceil<std::chrono::milliseconds>(*deadline - now).count(), 0L) : -1L;
    std::array<pollfd, 2> sources{{{xcb_get_file_descriptor(connection_.get()), POLLIN, 0},
                                   {programThere_ ? socket_.get() : -1, POLLIN, 0}}};
    poll(sources.data(), sources.size(), static_cast<int>(timeout));
    if (sources[1].revents != 0 && !receive()) {
      programThere_ = false;
    }
  }

  /// False when nothing was there.
  bool receive() {
    const auto message = receiveMessage(socket_);
    if (!message) {
      return false;
    }
    if (server_.own(unpackParcel(message->parcel))) {
      sendMessage(socket_, message->number);
    }
    return true;
  }

  const FileDescriptor &socket_;
  const HolderEnds ends_;
  SelectionConnection connection_;
  SelectionServer server_{connection_};
  bool programThere_ = true;
  std::optional<Clock::time_point> idleSince_;
};

}  // namespace

void runPasteboardHolder(const FileDescriptor &socket, HolderEnds ends) {
  try {
    Holder(socket, ends).run();
  } catch (const std::exception &) {
    // The program sees its end of the socket closed, and does something about it.
  }
}

}  // namespace lumiwren
