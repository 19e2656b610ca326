#include "app/CommandLine.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace lumiwren {
namespace {

using Command = CommandLine::Command;

constexpr std::array<std::pair<std::string_view, Command>, 6> plainOptions{{
    {"--menu", Command::Menu},
    {"--settings", Command::Settings},
    {"--set-api-key", Command::SetAPIKey},
    {"--quit", Command::Quit},
    {"--version", Command::Version},
    {"--help", Command::Help},
}};

}  // namespace

CommandLine CommandLine::parse(std::span<const char *const> arguments) {
  const std::vector<std::string_view> words(arguments.begin(), arguments.end());
  if (words.empty()) {
    return {};
  }
  constexpr std::string_view runAction = "--run-action";
  constexpr std::string_view runActionWithValue = "--run-action=";
  if (words.size() == 2 && words[0] == runAction) {
    return {.command = Command::RunAction, .action = std::string(words[1])};
  }
  if (words.size() == 1 && words[0].starts_with(runActionWithValue)) {
    return {.command = Command::RunAction, .action = std::string(words[0].substr(runActionWithValue.size()))};
  }
  if (words[0] == "--actions" && (words.size() == 1 || (words.size() == 2 && words[1] == "--json"))) {
    return {.command = Command::Actions, .action = {}, .isJSON = words.size() == 2};
  }
  const auto plain = std::find_if(plainOptions.begin(), plainOptions.end(),
                                  [&](const auto &option) { return option.first == words[0]; });
  return {.command = plain != plainOptions.end() && words.size() == 1 ? plain->second : Command::Unknown};
}

const char *CommandLine::usage() {
  return "usage: lumiwren                            start the program; the menu of the one that runs "
         "already\n"
         "       lumiwren --menu                     show its menu\n"
         "       lumiwren --settings                 show its actions\n"
         "       lumiwren --run-action NAME-OR-ID    do what the hotkey of that action does\n"
         "       lumiwren --actions [--json]         list the actions: identifier, hotkey, name\n"
         "       lumiwren --set-api-key              store the API key that is read from standard input in "
         "the keyring\n"
         "       lumiwren --quit                     end it\n"
         "       lumiwren --version\n"
         "       lumiwren --help\n";
}

}  // namespace lumiwren
