#pragma once

#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// How long a test waits for what must happen on the busiest machine.
inline constexpr std::chrono::seconds patience{30};

/// Sees any process of the machine end, the test's child or not.
class ProcessWatch {
public:
  /// Begins to watch a process that is there now.
  explicit ProcessWatch(pid_t pid);
  ProcessWatch(const ProcessWatch &) = delete;
  ProcessWatch &operator=(const ProcessWatch &) = delete;
  ~ProcessWatch();

  /// Waits for the process to end. False when it still runs after `limit`.
  bool waitForEnd(std::chrono::milliseconds limit = patience) const;

private:
  int pidfd_ = -1;
};

/// A child process that leads a process group. Made and used on one thread, which outlives it: the kernel
/// kills the child when that thread ends. Standard error is the test's own.
class Process {
public:
  struct Options {
    std::vector<std::string> command;  // looked up in PATH
    /// Set on top of the test's own environment.
    std::vector<std::pair<std::string, std::string>> environment = {};
    int deathSignal = SIGKILL;  // what the child gets when the test dies
  };

  /// Throws std::runtime_error when the program cannot be started.
  explicit Process(Options options);
  Process(std::vector<std::string> command);  // NOLINT(google-explicit-constructor)
  Process(const Process &) = delete;
  Process &operator=(const Process &) = delete;
  /// Ends the whole group: SIGTERM, then SIGKILL for what does not go.
  ~Process();

  pid_t pid() const { return pid_; }

  /// The next line of standard output, without its end; empty at the end of the output or when no whole line
  /// comes in time.
  std::optional<std::string> readLine(std::chrono::milliseconds limit = patience);
  /// The rest of standard output, up to its end; empty when that does not come in time.
  std::optional<std::string> readAll(std::chrono::milliseconds limit = patience);
  /// Skips lines up to one that equals `line`. False when it does not come.
  bool waitForLine(std::string_view line, std::chrono::milliseconds limit = patience);
  /// Writes to the child's standard input.
  void write(std::string_view text) const;
  void closeInput();

  /// To the whole group.
  void kill(int signal) const;
  /// The exit status as waitpid() gives it; empty when the child still runs after `limit`.
  std::optional<int> wait(std::chrono::milliseconds limit = patience);

private:
  enum class More { Yes, Ended, Late };
  More readMore(std::chrono::steady_clock::time_point deadline);

  pid_t pid_ = -1;
  std::optional<ProcessWatch> watch_;
  int input_ = -1;
  int output_ = -1;
  std::string buffer_;
  std::optional<int> status_;
};

}  // namespace lumiwren::testing
