#include "platform/linux/x11/selection/PasteboardHolderClient.h"

#include "platform/linux/Spawn.h"
#include "platform/linux/x11/selection/PasteboardHolder.h"
#include "platform/linux/x11/selection/PasteboardParcel.h"

#include <poll.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <system_error>
#include <utility>

namespace lumiwren {

namespace {

using Clock = std::chrono::steady_clock;

// The holder needs a millisecond; it takes longer only when the machine or the X server does.
constexpr std::chrono::milliseconds deliveryLimit{1000};

bool waitReadable(int file, Clock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    pollfd source{file, POLLIN, 0};
    const int ready = poll(&source, 1, static_cast<int>(left > 0 ? left : 0));
    if (ready >= 0 || errno != EINTR) {
      return ready > 0;
    }
  }
}

}  // namespace

PasteboardHolderClient::~PasteboardHolderClient() {
  {
    const std::lock_guard lock(starterMutex_);
    starter_ = {};
  }
  socket_.reset();
}

void PasteboardHolderClient::prepare() {
  if (const std::unique_lock lock(mutex_, std::try_to_lock); lock && isThere()) {
    return;
  }
  const std::lock_guard starterLock(starterMutex_);
  // The one before has long ended: it only starts a process.
  starter_ = std::jthread([this] {
    const std::lock_guard lock(mutex_);
    if (!isThere()) {
      start(Holder::NewProcess);
    }
  });
}

void PasteboardHolderClient::put(const PasteboardContents &contents) {
  try {
    const auto parcel = packParcel(contents);
    const std::lock_guard lock(mutex_);
    for (const auto holder : {Holder::Current, Holder::NewProcess, Holder::Thread}) {
      if (start(holder) && deliver(parcel)) {
        return;
      }
    }
    std::fputs("lumiwren: the pasteboard cannot be written\n", stderr);
  } catch (const std::system_error &error) {
    std::fprintf(stderr, "lumiwren: the pasteboard cannot be written: %s\n", error.what());
  }
}

bool PasteboardHolderClient::isThere() const {
  if (!socket_) {
    return false;
  }
  pollfd source{socket_.get(), 0, 0};
  return poll(&source, 1, 0) == 0;  // One that has ended makes it readable as hung up.
}

bool PasteboardHolderClient::start(Holder kind) {
  if (kind == Holder::Current) {
    return isThere();
  }
  socket_.reset();
  auto sockets = makeParcelSockets();
  if (kind == Holder::NewProcess) {
    if (!startProcess(sockets.holder)) {
      return false;
    }
  } else {
    startThread(std::move(sockets.holder));
  }
  socket_ = std::move(sockets.program);
  return true;
}

bool PasteboardHolderClient::startProcess(const FileDescriptor &socket) const {
  const auto child = spawn(executable_, {},
                           {.handedOver = socket.get(), .keepsStandardError = false, .hasOwnSession = true});
  if (!child) {
    return false;
  }
  // It leaves the holding to a child of its own, so that the holder is nobody's to wait for.
  const int status = waitForEnd(*child);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void PasteboardHolderClient::startThread(FileDescriptor socket) {
  if (!std::exchange(complained_, true)) {
    std::fprintf(stderr,
                 "lumiwren: %s cannot be used; what is put on the pasteboard ends with this program\n",
                 executable_.c_str());
  }
  holderThread_ =
      std::jthread([socket = std::move(socket)] { runPasteboardHolder(socket, HolderEnds::WithTheProgram); });
}

bool PasteboardHolderClient::deliver(const FileDescriptor &parcel) {
  const auto number = ++messages_;
  if (!sendMessage(socket_, number, parcel)) {
    return false;
  }
  const auto deadline = Clock::now() + deliveryLimit;
  while (waitReadable(socket_.get(), deadline)) {
    const auto message = receiveMessage(socket_);
    if (!message) {
      return false;
    }
    if (message->number == number) {
      return true;
    }
  }
  return true;  // The holder has it, and is only slow.
}

}  // namespace lumiwren
