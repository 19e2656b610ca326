#include "support/XServer.h"

#include <csignal>
#include <stdexcept>

namespace lumiwren::testing {
namespace {

// The server names its display on standard output as soon as it takes connections. On SIGTERM it also removes
// its lock and its socket.
Process::Options serverOptions(std::string program, const XServer::Options &options,
                               std::vector<std::string> screen) {
  Process::Options result{.command = {std::move(program), "-displayfd", "1", "-nolisten", "tcp", "-noreset"},
                          .deathSignal = SIGTERM};
  result.command.insert(result.command.end(), screen.begin(), screen.end());
  result.command.insert(result.command.end(), options.arguments.begin(), options.arguments.end());
  return result;
}

}  // namespace

XServer::XServer(Process::Options options) : process_(options) {
  const auto number = process_.readLine();
  if (!number) {
    throw std::runtime_error(options.command.at(0) + " did not come up");
  }
  display_ = ":" + *number;
}

XServer::XServer(const Options &options)
    : XServer(serverOptions(
          "Xvfb", options,
          {"-screen", "0", std::to_string(options.width) + "x" + std::to_string(options.height) + "x24"})) {}

XServer XServer::nestedIn(const XServer &host, const Options &options) {
  auto server = serverOptions(
      "Xephyr", options, {"-screen", std::to_string(options.width) + "x" + std::to_string(options.height)});
  server.environment = host.environment();
  return XServer(std::move(server));
}

std::vector<std::pair<std::string, std::string>> XServer::environment() const {
  return {{"DISPLAY", display_}, {"WAYLAND_DISPLAY", ""}, {"XAUTHORITY", "/dev/null"}};
}

}  // namespace lumiwren::testing
