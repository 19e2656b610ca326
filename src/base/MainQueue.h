#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

namespace lumiwren {

/// The order in which things happen on the main thread. Any thread posts; the main thread, which made the
/// queue, runs the blocks one at a time in the order of their posting. The loop that hosts the queue gives it
/// a waker, and answers each wake by calling runPending().
class MainQueue {
public:
  using Block = std::function<void()>;
  using TimePoint = std::chrono::steady_clock::time_point;
  using Now = std::function<TimePoint()>;

  explicit MainQueue(Now now = &std::chrono::steady_clock::now);
  MainQueue(const MainQueue &) = delete;
  MainQueue &operator=(const MainQueue &) = delete;
  ~MainQueue();

  /// `waker` is called on any thread, with no lock held, whenever runPending() has something new to look at:
  /// a block, or a deadline earlier than all before.
  void setWaker(std::function<void()> waker);

  void post(Block block);
  void postAfter(std::chrono::milliseconds delay, Block block);

  /// Posts `block` and waits until it has run. Throws CancellationError when `token` is stopped first, or the
  /// queue is closed; the block then does not run any more. On the main thread the block runs in place.
  void runAndWait(const std::stop_token &token, const Block &block);

  /// Runs what was posted, or became due, before this call. Main thread.
  void runPending();
  /// When the earliest delayed block is due; empty when none waits.
  std::optional<TimePoint> nextDeadline() const;

  /// Drops everything that has not run and everything posted later. Main thread, at quit.
  void close();

private:
  void wake();

  const Now now_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  mutable std::mutex mutex_;
  std::condition_variable_any finished_;  // a block of runAndWait() has run, or the queue has been closed
  std::function<void()> waker_;
  std::deque<Block> ready_;
  std::multimap<TimePoint, Block> delayed_;
  bool wakeOutstanding_ = false;
  bool closed_ = false;
};

}  // namespace lumiwren
