#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <stop_token>

namespace lumiwren {

/// Thrown by everything that can wait, at once, when its stop token asks it to stop.
class CancellationError : public std::exception {
public:
  const char *what() const noexcept override { return "cancelled"; }
};

void throwIfStopped(const std::stop_token &token);

/// Waits for `duration`; throws CancellationError as soon as `token` is stopped.
void sleepFor(const std::stop_token &token, std::chrono::milliseconds duration);

/// Straight-line code on a thread of its own. Holding the handle is holding the task: dropping or replacing
/// the handle cancels the task and never waits for it. Handles belong to one thread at a time.
class [[nodiscard]] Task {
public:
  /// A body ends by returning or by throwing CancellationError; it handles every other exception itself.
  using Body = std::function<void(const std::stop_token &)>;

  Task() noexcept = default;
  Task(Task &&) noexcept = default;
  Task &operator=(Task &&other) noexcept;
  Task(const Task &) = delete;
  Task &operator=(const Task &) = delete;
  ~Task();

  static Task start(Body body);

  /// Asks the task to stop and returns at once. Does nothing for a task that has ended.
  void cancel() noexcept;
  /// Gives the handle up; the task runs to its own end, or to that of the program.
  void detach() noexcept;
  bool isRunning() const noexcept;

  /// Cancels every task, detached ones included, and waits until all have ended, `limit` at the most.
  /// False when some are still running: the process must then leave without running destructors.
  /// Called once, at quit, from the thread that starts tasks; no task may be started afterwards.
  static bool endAll(std::chrono::milliseconds limit);

  struct Record;

private:
  explicit Task(std::shared_ptr<Record> record) noexcept;

  std::shared_ptr<Record> record_;
};

}  // namespace lumiwren
