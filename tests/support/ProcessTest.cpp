#include "support/Process.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

namespace lumiwren::testing {
namespace {

TEST(Process, ReadsLinesAsTheyComeAndEndsWithItsInput) {
  Process cat({"cat"});
  cat.write("one\ntwo\n");
  EXPECT_EQ(cat.readLine(), "one");
  EXPECT_EQ(cat.readLine(), "two");
  cat.closeInput();
  EXPECT_EQ(cat.readLine(), std::nullopt);
  EXPECT_EQ(cat.wait(), 0);
}

TEST(Process, ReadLineGivesUpAtItsLimit) {
  Process cat({"cat"});
  EXPECT_EQ(cat.readLine(std::chrono::milliseconds(1)), std::nullopt);
}

TEST(Process, AMissingProgramIsAnError) {
  EXPECT_THROW(Process({"/nonexistent/program"}), std::runtime_error);
}

TEST(Process, EndsTheWholeGroup) {
  std::optional<ProcessWatch> grandchild;
  {
    Process shell({"sh", "-c", "sleep 1000 & echo $!; wait"});
    grandchild.emplace(static_cast<pid_t>(std::stol(shell.readLine().value())));
    EXPECT_FALSE(grandchild->waitForEnd(std::chrono::milliseconds(0)));
  }
  EXPECT_TRUE(grandchild->waitForEnd());
}

TEST(Process, PassesItsEnvironment) {
  Process shell(
      Process::Options{.command = {"sh", "-c", "echo $GREETING"}, .environment = {{"GREETING", "hello"}}});
  EXPECT_EQ(shell.readLine(), "hello");
}

}  // namespace
}  // namespace lumiwren::testing
