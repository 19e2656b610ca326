#include "platform/linux/CurlNetwork.h"

#include "platform/linux/CurlTransfer.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

namespace lumiwren {

namespace {

/// libcurl is told to leave signals alone; a peer that is gone is an error, not a signal.
void ignoreBrokenPipes() {
  thread_local const bool isBlocked = [] {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    return pthread_sigmask(SIG_BLOCK, &signals, nullptr) == 0;
  }();
  static_cast<void>(isBlocked);
}

/// What is on this computer is asked directly; a proxy elsewhere could not reach it, and would see the key.
std::string hostsWithoutProxy() {
  const char *value = std::getenv("no_proxy");
  if (value == nullptr) {
    value = std::getenv("NO_PROXY");
  }
  if (value != nullptr && std::strcmp(value, "*") == 0) {
    return value;  // Understood only when it stands alone.
  }
  const std::string own = "localhost,127.0.0.0/8,::1";
  return value == nullptr || *value == '\0' ? own : own + "," + value;
}

}  // namespace

CurlNetwork::CurlNetwork(std::string certificateDirectory)
    : certificateDirectory_(std::move(certificateDirectory)), noProxy_(hostsWithoutProxy()) {}

CurlNetwork::~CurlNetwork() {
  if (multi_ != nullptr) {
    curl_->multiCleanup(multi_);
    curl_->shareCleanup(share_);
  }
}

void CurlNetwork::attendTo(std::shared_ptr<CurlTransfer> transfer) {
  const CurlLibrary &curl = CurlLibrary::shared();
  {
    const std::lock_guard lock(mutex_);
    if (!isQuitting_) {
      if (multi_ == nullptr) {
        curl_ = &curl;
        multi_ = curl_->multiInit();
        share_ = curl_->shareInit();
        curl_->shareSetopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
      }
      wanting_.push_back(std::move(transfer));
      if (isDriven_) {
        curl_->multiWakeup(multi_);
      }
      return;
    }
  }
  transfer->end(CurlTransfer::Outcome::Cancelled);
}

void CurlNetwork::driveUntil(const std::function<bool()> &isReady) {
  ignoreBrokenPipes();
  std::unique_lock lock(mutex_);
  for (bool ready = isReady(); !ready && !isQuitting_;) {
    if (isDriven_) {
      changed_.wait(lock);
      ready = isReady();
      continue;
    }
    isDriven_ = true;
    while (!ready && !isQuitting_) {
      lock.unlock();
      attend();
      int running = 0;
      curl_->multiPerform(multi_, &running);
      reap();
      const int wait = expire();
      ready = isReady();
      if (!ready) {
        curl_->multiPoll(multi_, nullptr, 0, wait, nullptr);
      }
      lock.lock();
    }
    isDriven_ = false;
    changed_.notify_all();  // Another takes over.
  }
}

void CurlNetwork::settle() {
  std::unique_lock lock(mutex_);
  if (isDriven_ || isQuitting_ || wanting_.empty()) {
    return;
  }
  isDriven_ = true;
  lock.unlock();
  attend();
  lock.lock();
  isDriven_ = false;
  changed_.notify_all();
}

void CurlNetwork::notify() {
  {
    // Who has just found nothing to be ready is waiting by now.
    const std::lock_guard lock(mutex_);
  }
  changed_.notify_all();
}

void CurlNetwork::quit() {
  {
    std::unique_lock lock(mutex_);
    isQuitting_ = true;
    if (isDriven_) {
      curl_->multiWakeup(multi_);
    }
    changed_.notify_all();
    changed_.wait(lock, [this] { return !isDriven_; });
  }
  // Nobody drives any more.
  for (const auto &transfer : std::exchange(wanting_, {})) {
    transfer->end(CurlTransfer::Outcome::Cancelled);
  }
  while (!transfers_.empty()) {
    transfers_.back()->end(CurlTransfer::Outcome::Cancelled);
    remove(*transfers_.back());
  }
}

void CurlNetwork::attend() {
  std::vector<std::shared_ptr<CurlTransfer>> wanting;
  {
    const std::lock_guard lock(mutex_);
    wanting.swap(wanting_);
  }
  for (const auto &transfer : wanting) {
    if (transfer->isCancelRequested()) {
      transfer->end(CurlTransfer::Outcome::Cancelled);
      remove(*transfer);
    } else if (!transfer->hasStarted()) {
      transfer->start(multi_, {*curl_, share_, certificateDirectory_, noProxy_});
      transfers_.push_back(transfer);
    } else {
      transfer->resume();
    }
  }
}

void CurlNetwork::reap() {
  int left = 0;
  while (const CURLMsg *const message = curl_->multiInfoRead(multi_, &left)) {
    const auto transfer = std::find_if(transfers_.begin(), transfers_.end(), [&](const auto &candidate) {
      return candidate->easy() == message->easy_handle;
    });
    (*transfer)->complete(message->data.result);
    remove(**transfer);
  }
}

/// Ends the transfers that have been silent for too long; returns the milliseconds until the next may be.
int CurlNetwork::expire() {
  const auto now = std::chrono::steady_clock::now();
  auto wait = std::chrono::milliseconds(std::numeric_limits<int>::max());
  // From the back: what is removed must not move what is still to come.
  for (std::size_t index = transfers_.size(); index-- > 0;) {
    CurlTransfer &transfer = *transfers_[index];
    const auto deadline = transfer.silenceDeadline();
    if (deadline <= now) {
      // The connection may be dead without anybody having said so.
      curl_->easySetopt(transfer.easy(), CURLOPT_FORBID_REUSE, 1L);
      transfer.complete(CURLE_OPERATION_TIMEDOUT);
      remove(transfer);
    } else if (deadline != CurlTransfer::TimePoint::max()) {
      wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(deadline - now));
    }
  }
  return static_cast<int>(wait.count());
}

void CurlNetwork::remove(CurlTransfer &transfer) {
  transfer.release(multi_);
  std::erase_if(transfers_, [&transfer](const auto &candidate) { return candidate.get() == &transfer; });
}

}  // namespace lumiwren
