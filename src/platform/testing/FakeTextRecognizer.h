#pragma once

#include "base/Task.h"
#include "platform/TextRecognizer.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// A recognizer that reads in every picture what a test says. Any thread.
class FakeTextRecognizer : public TextRecognizer {
public:
  void prepare() override {
    const std::lock_guard lock(mutex_);
    ++prepareCount_;
  }

  std::vector<TextObservation> recognize(const Bitmap &bitmap, const std::stop_token &token) override {
    throwIfStopped(token);
    std::unique_lock lock(mutex_);
    bitmaps_.push_back(bitmap);
    ++waiting_;
    changed_.notify_all();
    changed_.wait(lock, token, [this] { return !silent_; });
    --waiting_;
    throwIfStopped(token);
    if (error_) {
      throw TextRecognitionError(*error_);
    }
    return observations_;
  }

  /// The lines of every picture from now on; an empty optional is a line that cannot be read.
  void setLines(const std::vector<std::optional<std::string>> &lines) {
    const std::lock_guard lock(mutex_);
    error_.reset();
    observations_.clear();
    for (const auto &line : lines) {
      observations_.push_back({line});
    }
  }
  /// Every recognition fails from now on, with this text.
  void setError(std::string error) {
    const std::lock_guard lock(mutex_);
    error_ = std::move(error);
  }
  /// From now on every recognition waits until its token is stopped, or setSilent(false).
  void setSilent(bool silent) {
    const std::lock_guard lock(mutex_);
    silent_ = silent;
    changed_.notify_all();
  }
  /// Returns when `count` recognitions are waiting in a silent recognizer.
  void waitForCallers(std::size_t count = 1) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return waiting_ >= count; });
  }

  std::size_t prepareCount() const {
    const std::lock_guard lock(mutex_);
    return prepareCount_;
  }
  /// What was to be recognised, in order.
  std::vector<Bitmap> bitmaps() const {
    const std::lock_guard lock(mutex_);
    return bitmaps_;
  }

private:
  mutable std::mutex mutex_;
  std::condition_variable_any changed_;
  std::size_t prepareCount_ = 0;
  std::size_t waiting_ = 0;
  bool silent_ = false;
  std::optional<std::string> error_;
  std::vector<TextObservation> observations_;
  std::vector<Bitmap> bitmaps_;
};

}  // namespace lumiwren::testing
