#pragma once

#include <span>
#include <string>

namespace lumiwren {

/// What the program was started for.
struct CommandLine {
  enum class Command { Start, Menu, Settings, RunAction, Actions, SetAPIKey, Quit, Version, Help, Unknown };

  Command command = Command::Start;
  std::string action = {};  // of RunAction: a name or an identifier, as it was given
  bool isJSON = false;      // of Actions

  /// `arguments` without the program's own name. What stands where an action is named is never taken for an
  /// option.
  static CommandLine parse(std::span<const char *const> arguments);
  static const char *usage();

  friend bool operator==(const CommandLine &, const CommandLine &) = default;
};

}  // namespace lumiwren
