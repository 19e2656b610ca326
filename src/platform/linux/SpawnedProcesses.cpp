#include "platform/linux/SpawnedProcesses.h"

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/Spawn.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <utility>

namespace lumiwren {
namespace {

// A helper that is asked to end has nothing to finish.
constexpr std::chrono::milliseconds endLimit{300};

bool hasEnded(const FileDescriptor &process, int stopped, int limit) {
  std::array<pollfd, 2> sources{{{process.get(), POLLIN, 0}, {stopped, POLLIN, 0}}};
  while (poll(sources.data(), sources.size(), limit) < 0 && errno == EINTR) {
  }
  return sources[0].revents != 0;
}

void waitOrEnd(pid_t child, const std::stop_token &token) {
  const FileDescriptor process(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
  const FileDescriptor stopped(eventfd(0, EFD_CLOEXEC));
  const std::stop_callback stop(token, [&stopped] {
    constexpr std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(stopped.get(), &one, sizeof one);
  });
  if (!hasEnded(process, stopped.get(), -1)) {
    kill(child, SIGTERM);
    if (!hasEnded(process, -1, static_cast<int>(endLimit.count()))) {
      kill(child, SIGKILL);
    }
  }
  waitForEnd(child);
}

}  // namespace

bool SpawnedProcesses::launch(const std::filesystem::path &executable,
                              const std::vector<std::string> &arguments, std::function<void()> ended) {
  const auto child = spawn(executable, arguments, {.keepsStandardError = true});
  if (!child) {
    return false;
  }
  std::erase_if(running_, [](const Task &task) { return !task.isRunning(); });
  running_.push_back(Task::start([child = *child, ended = std::move(ended)](const std::stop_token &token) {
    waitOrEnd(child, token);
    ended();
  }));
  return true;
}

}  // namespace lumiwren
