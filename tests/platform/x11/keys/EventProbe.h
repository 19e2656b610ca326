#pragma once

#include "base/MainQueue.h"
#include "platform/EventMonitors.h"
#include "support/Process.h"

#include <condition_variable>
#include <mutex>
#include <vector>

namespace lumiwren::testing {

/// Stands for a main thread that does nothing but run its queue and remember what monitors tell it.
class EventProbe {
public:
  EventProbe() {
    queue_.setWaker([this] {
      const std::lock_guard lock(mutex_);
      woken_ = true;
      changed_.notify_all();
    });
  }

  MainQueue &queue() { return queue_; }
  EventMonitors::GlobalHandler handler() {
    return [this](const InputEvent &event) { events_.push_back(event); };
  }

  /// Runs the queue until `count` events are there, or patience ends, and gives and forgets them.
  std::vector<InputEvent> take(std::size_t count) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (events_.size() < count) {
      std::unique_lock lock(mutex_);
      if (!changed_.wait_until(lock, deadline, [this] { return woken_; })) {
        break;
      }
      woken_ = false;
      lock.unlock();
      queue_.runPending();
    }
    return std::exchange(events_, {});
  }

private:
  MainQueue queue_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool woken_ = false;
  std::vector<InputEvent> events_;
};

}  // namespace lumiwren::testing
