#include "base/Task.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace lumiwren {

struct Task::Record {
  std::stop_source stop;
  bool ended = false;   // guarded by the registry's mutex
  std::jthread thread;  // likewise, until it has ended
};

namespace {

class Registry {
public:
  static Registry &shared() {
    // Never destroyed: an abandoned thread may still report its end while the process leaves.
    static auto *registry = new Registry;
    return *registry;
  }

  void add(const std::shared_ptr<Task::Record> &record, std::jthread thread) {
    joinEnded();
    const std::lock_guard lock(mutex_);
    record->thread = std::move(thread);
    records_.push_back(record);
  }

  void markEnded(Task::Record &record) {
    const std::lock_guard lock(mutex_);
    record.ended = true;
    changed_.notify_all();
  }

  bool hasEnded(const Task::Record &record) {
    const std::lock_guard lock(mutex_);
    return record.ended;
  }

  bool endAll(std::chrono::milliseconds limit) {
    for (const auto &record : copy()) {
      record->stop.request_stop();
    }
    {
      std::unique_lock lock(mutex_);
      const bool all = changed_.wait_for(lock, limit, [this] {
        return std::all_of(records_.begin(), records_.end(),
                           [](const auto &record) { return record->ended; });
      });
      if (!all) {
        return false;
      }
    }
    joinEnded();
    return true;
  }

private:
  std::vector<std::shared_ptr<Task::Record>> copy() {
    const std::lock_guard lock(mutex_);
    return records_;
  }

  void joinEnded() {
    std::vector<std::shared_ptr<Task::Record>> ended;
    {
      const std::lock_guard lock(mutex_);
      const auto first = std::stable_partition(records_.begin(), records_.end(),
                                               [](const auto &record) { return !record->ended; });
      ended.assign(first, records_.end());
      records_.erase(first, records_.end());
    }
    for (const auto &record : ended) {
      record->thread.join();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::shared_ptr<Task::Record>> records_;
};

}  // namespace

void throwIfStopped(const std::stop_token &token) {
  if (token.stop_requested()) {
    throw CancellationError();
  }
}

void sleepFor(const std::stop_token &token, std::chrono::milliseconds duration) {
  std::mutex mutex;
  std::condition_variable_any wakeUp;
  std::unique_lock lock(mutex);
  wakeUp.wait_for(lock, token, duration, [] { return false; });
  throwIfStopped(token);
}

Task::Task(std::shared_ptr<Record> record) noexcept : record_(std::move(record)) {}

Task &Task::operator=(Task &&other) noexcept {
  if (this != &other) {
    cancel();
    record_ = std::move(other.record_);
  }
  return *this;
}

Task::~Task() {
  cancel();
}

Task Task::start(Body body) {
  auto record = std::make_shared<Record>();
  // The registry keeps the record until its thread is joined, so the thread needs no share of its own.
  Record *const running = record.get();
  std::jthread thread([running, body = std::move(body)]() mutable {
    try {
      body(running->stop.get_token());
    } catch (const CancellationError &) {
      // The silent end of a cancelled task.
    }
    body = nullptr;
    Registry::shared().markEnded(*running);
  });
  Registry::shared().add(record, std::move(thread));
  return Task(std::move(record));
}

void Task::cancel() noexcept {
  if (record_) {
    record_->stop.request_stop();
  }
}

void Task::detach() noexcept {
  record_.reset();
}

bool Task::isRunning() const noexcept {
  return record_ && !Registry::shared().hasEnded(*record_);
}

bool Task::endAll(std::chrono::milliseconds limit) {
  return Registry::shared().endAll(limit);
}

}  // namespace lumiwren
