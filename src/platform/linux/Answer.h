#pragma once

#include "base/Task.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>
#include <utility>

namespace lumiwren {

/// What one thread gives another that waits for it, once.
template <typename T>
class Answer {
public:
  using Clock = std::chrono::steady_clock;

  void give(T value) {
    const std::lock_guard lock(mutex_);
    value_ = std::move(value);
    given_.notify_all();
  }

  /// Empty when nothing was given by `deadline`. Throws CancellationError as soon as `token` is stopped.
  std::optional<T> wait(const std::stop_token &token, Clock::time_point deadline) {
    std::unique_lock lock(mutex_);
    given_.wait_until(lock, token, deadline, [this] { return value_.has_value(); });
    throwIfStopped(token);
    return std::exchange(value_, std::nullopt);
  }

private:
  std::mutex mutex_;
  std::condition_variable_any given_;
  std::optional<T> value_;
};

}  // namespace lumiwren
