#pragma once

#include "platform/ChildProcesses.h"

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// Processes that run until the test ends them.
class FakeChildProcesses : public ChildProcesses {
public:
  struct Process {
    std::filesystem::path executable;
    std::vector<std::string> arguments;
    std::function<void()> ended;
  };

  bool launch(const std::filesystem::path &executable, const std::vector<std::string> &arguments,
              std::function<void()> ended) override {
    if (!canLaunch) {
      return false;
    }
    launched.push_back({executable, arguments, std::move(ended)});
    return true;
  }

  void end(std::size_t number = 0) { std::exchange(launched.at(number).ended, nullptr)(); }

  bool canLaunch = true;
  std::vector<Process> launched;
};

}  // namespace lumiwren::testing
