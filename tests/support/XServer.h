#pragma once

#include "support/Process.h"

#include <string>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// An X server of the test's own, without any window manager. It ends with this object, and when the test
/// dies.
class XServer {
public:
  struct Options {
    int width = 1280;
    int height = 800;
    std::vector<std::string> arguments = {};
  };

  /// A server without screen or keyboard (Xvfb). Throws std::runtime_error when it does not come up.
  explicit XServer(const Options &options);
  XServer() : XServer(Options{}) {}

  /// A server in a window of another one (Xephyr), whose keyboard and mouse are those of the other one: what
  /// is injected there is a physical key press here.
  static XServer nestedIn(const XServer &host, const Options &options);

  /// The value of DISPLAY.
  const std::string &display() const { return display_; }
  /// What a client program needs in its environment.
  std::vector<std::pair<std::string, std::string>> environment() const;
  /// For tests of a server that dies.
  Process &process() { return process_; }

private:
  explicit XServer(Process::Options options);

  Process process_;
  std::string display_;
};

}  // namespace lumiwren::testing
