#include "platform/linux/Spawn.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace lumiwren {
namespace {

// Where a program finds what is handed over: after the standard files.
constexpr int handedOverFile = 3;

struct SpawnActions {
  SpawnActions() { posix_spawn_file_actions_init(&value); }
  SpawnActions(const SpawnActions &) = delete;
  SpawnActions &operator=(const SpawnActions &) = delete;
  ~SpawnActions() { posix_spawn_file_actions_destroy(&value); }
  posix_spawn_file_actions_t value{};
};

struct SpawnAttributes {
  SpawnAttributes() { posix_spawnattr_init(&value); }
  SpawnAttributes(const SpawnAttributes &) = delete;
  SpawnAttributes &operator=(const SpawnAttributes &) = delete;
  ~SpawnAttributes() { posix_spawnattr_destroy(&value); }
  posix_spawnattr_t value{};
};

}  // namespace

std::optional<pid_t> spawn(const std::filesystem::path &executable, const std::vector<std::string> &arguments,
                           const SpawnOptions &options) {
  SpawnActions actions;
  posix_spawn_file_actions_addopen(&actions.value, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions.value, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  if (!options.keepsStandardError) {
    posix_spawn_file_actions_addopen(&actions.value, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  }
  int firstToClose = handedOverFile;
  if (options.handedOver >= 0) {
    posix_spawn_file_actions_adddup2(&actions.value, options.handedOver, firstToClose++);
  }
  posix_spawn_file_actions_addclosefrom_np(&actions.value, firstToClose);

  SpawnAttributes attributes;
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes.value, &signals);
  sigfillset(&signals);
  posix_spawnattr_setsigdefault(&attributes.value, &signals);
  posix_spawnattr_setflags(&attributes.value,
                           static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                              (options.hasOwnSession ? POSIX_SPAWN_SETSID : 0)));

  std::vector<std::string> words{executable.filename().string()};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char *> pointers;
  pointers.reserve(words.size() + 1);
  for (auto &word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  pid_t child = 0;
  if (posix_spawn(&child, executable.c_str(), &actions.value, &attributes.value, pointers.data(), environ) !=
      0) {
    return std::nullopt;
  }
  return child;
}

int waitForEnd(pid_t process) {
  int status = -1;
  while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace lumiwren
