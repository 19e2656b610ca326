#pragma once

#include "platform/linux/FileDescriptor.h"

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace lumiwren {

struct SpawnOptions {
  /// What the program finds as its file 3; nothing when negative.
  int handedOver = -1;
  /// Where its complaints go: to those of this program, or nowhere.
  bool keepsStandardError = false;
  /// Away from this program's terminal and process group.
  bool hasOwnSession = false;
};

/// Starts a program with nothing of this one but its environment: no signal blocked or ignored, no open file
/// but those that are stated, nothing to read and nowhere to write. Its process is the caller's to wait for.
/// Empty when it cannot be started.
std::optional<pid_t> spawn(const std::filesystem::path &executable, const std::vector<std::string> &arguments,
                           const SpawnOptions &options);

/// Waits for the end of a process; its status as waitpid() has it.
int waitForEnd(pid_t process);

}  // namespace lumiwren
