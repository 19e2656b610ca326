#pragma once

#include "base/Task.h"
#include "platform/ChildProcesses.h"

#include <vector>

namespace lumiwren {

/// Child processes of this one. A task waits for each; when it is stopped the process is asked to end, and
/// killed when it does not within a short while.
class SpawnedProcesses : public ChildProcesses {
public:
  bool launch(const std::filesystem::path &executable, const std::vector<std::string> &arguments,
              std::function<void()> ended) override;

private:
  std::vector<Task> running_;
};

}  // namespace lumiwren
