#include "app/CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lumiwren {
namespace {

using Command = CommandLine::Command;

struct Case {
  std::vector<const char *> arguments;
  CommandLine expected;
};

void PrintTo(const Case &each, std::ostream *out) {
  for (const char *const argument : each.arguments) {
    *out << argument << ' ';
  }
}

class CommandLineTest : public ::testing::TestWithParam<Case> {};

TEST_P(CommandLineTest, SaysWhatTheProgramIsStartedFor) {
  EXPECT_EQ(CommandLine::parse(GetParam().arguments), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, CommandLineTest,
    ::testing::Values(Case{{}, {}}, Case{{"--menu"}, {.command = Command::Menu}},
                      Case{{"--settings"}, {.command = Command::Settings}},
                      Case{{"--set-api-key"}, {.command = Command::SetAPIKey}},
                      Case{{"--quit"}, {.command = Command::Quit}},
                      Case{{"--version"}, {.command = Command::Version}},
                      Case{{"--help"}, {.command = Command::Help}},
                      Case{{"--actions"}, {.command = Command::Actions}},
                      Case{{"--actions", "--json"}, {.command = Command::Actions, .isJSON = true}},
                      Case{{"--run-action", "Shorten"}, {.command = Command::RunAction, .action = "Shorten"}},
                      Case{{"--run-action=Say it"}, {.command = Command::RunAction, .action = "Say it"}}));

INSTANTIATE_TEST_SUITE_P(
    NamesThatLookLikeOptions, CommandLineTest,
    ::testing::Values(Case{{"--run-action", "--quit"}, {.command = Command::RunAction, .action = "--quit"}},
                      Case{{"--run-action=--json"}, {.command = Command::RunAction, .action = "--json"}},
                      Case{{"--run-action", ""}, {.command = Command::RunAction}},
                      Case{{"--run-action="}, {.command = Command::RunAction}}));

INSTANTIATE_TEST_SUITE_P(Unknown, CommandLineTest,
                         ::testing::Values(Case{{"--unknown"}, {.command = Command::Unknown}},
                                           Case{{""}, {.command = Command::Unknown}},
                                           Case{{"Shorten"}, {.command = Command::Unknown}},
                                           Case{{"--run-action"}, {.command = Command::Unknown}},
                                           Case{{"--run-action", "one", "two"},
                                                {.command = Command::Unknown}},
                                           Case{{"--run-action=one", "two"}, {.command = Command::Unknown}},
                                           Case{{"--actions", "--xml"}, {.command = Command::Unknown}},
                                           Case{{"--json", "--actions"}, {.command = Command::Unknown}},
                                           Case{{"--quit", "now"}, {.command = Command::Unknown}},
                                           Case{{"--menu", "--settings"}, {.command = Command::Unknown}},
                                           Case{{"--version", "--version"}, {.command = Command::Unknown}}));

}  // namespace
}  // namespace lumiwren
