#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace lumiwren {

/// Programs that are run as processes of their own, and ended with this object. Main thread.
class ChildProcesses {
public:
  virtual ~ChildProcesses() = default;

  /// Starts a program with these arguments (its own name is not among them), with nothing to read and nowhere
  /// to write but the standard error. False when it cannot be started; otherwise `ended` is called once, on
  /// another thread, when the process has ended in whatever way.
  virtual bool launch(const std::filesystem::path &executable, const std::vector<std::string> &arguments,
                      std::function<void()> ended) = 0;
};

}  // namespace lumiwren
