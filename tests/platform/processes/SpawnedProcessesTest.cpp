#include "platform/linux/SpawnedProcesses.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <thread>

namespace lumiwren {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds patience{20};

class SpawnedProcessesTest : public ::testing::Test {
protected:
  ~SpawnedProcessesTest() override {
    processes.reset();
    EXPECT_TRUE(Task::endAll(patience));
    // Nobody is left to be waited for.
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  }

  bool run(const std::string &script) {
    return processes->launch("/bin/sh", {"-c", script, "sh", out.string(), "two words"}, [this] {
      endedOn = std::this_thread::get_id();
      ended.set_value();
    });
  }
  bool waitForEnd() { return ended.get_future().wait_for(patience) == std::future_status::ready; }
  void waitForOutput() const {
    while (!fs::exists(out)) {
      std::this_thread::yield();
    }
  }
  std::string output() const {
    std::ifstream file(out);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const testing::TemporaryFolder folder;
  const fs::path out = folder.path() / "out";
  std::optional<SpawnedProcesses> processes{std::in_place};
  std::thread::id endedOn;
  std::promise<void> ended;
};

TEST_F(SpawnedProcessesTest, AProgramGetsItsArgumentsAndItsEndIsToldOnAnotherThread) {
  ASSERT_TRUE(run("printf '%s' \"$2\" > $1"));
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(output(), "two words");
  EXPECT_NE(endedOn, std::this_thread::get_id());
}

TEST_F(SpawnedProcessesTest, AFailureIsAnEndLikeAnyOther) {
  ASSERT_TRUE(run("exit 3"));
  EXPECT_TRUE(waitForEnd());
}

TEST_F(SpawnedProcessesTest, ACrashIsAnEndLikeAnyOther) {
  ASSERT_TRUE(run("kill -KILL $$"));
  EXPECT_TRUE(waitForEnd());
}

TEST_F(SpawnedProcessesTest, AProgramThatIsNotThereCannotBeStarted) {
  bool isEnded = false;
  EXPECT_FALSE(processes->launch(folder.path() / "missing", {}, [&] { isEnded = true; }));
  EXPECT_FALSE(isEnded);
}

TEST_F(SpawnedProcessesTest, AProgramHasNothingToReadAndNoFileOfThisOne) {
  const auto inherited = std::fopen("/dev/zero", "r");
  ASSERT_NE(inherited, nullptr);
  ASSERT_TRUE(run("cat > $1; (ls /proc/$$/fd) >> $1; exit"));
  ASSERT_TRUE(waitForEnd());
  std::fclose(inherited);
  EXPECT_EQ(output(), "0\n1\n2\n");
}

TEST_F(SpawnedProcessesTest, AProgramHasNoSignalBlockedOrIgnored) {
  sigset_t blocked, before;
  sigfillset(&blocked);
  pthread_sigmask(SIG_SETMASK, &blocked, &before);
  const auto pipeHandler = std::signal(SIGPIPE, SIG_IGN);
  ASSERT_TRUE(run("grep -E 'Sig(Blk|Ign)' /proc/$$/status | cut -f 2 > $1"));
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  ASSERT_TRUE(waitForEnd());
  std::signal(SIGPIPE, pipeHandler);
  std::istringstream masks(output());
  std::uint64_t mask = 0;
  for (int count = 0; count < 2; ++count) {
    ASSERT_TRUE(masks >> std::hex >> mask);
    // 32 and 33 are the C library's own.
    EXPECT_EQ(mask & 0x7fffffff, 0U);
  }
}

TEST_F(SpawnedProcessesTest, ARunningProgramEndsWithTheObject) {
  ASSERT_TRUE(run("trap 'echo asked > $1; exit' TERM; echo running > $1; while :; do sleep 0.01; done"));
  waitForOutput();
  processes.reset();
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(output(), "asked\n");
}

TEST_F(SpawnedProcessesTest, AProgramThatDoesNotEndWhenItIsAskedIsKilled) {
  ASSERT_TRUE(run("trap '' TERM; echo running > $1; while :; do sleep 0.01; done"));
  waitForOutput();
  processes.reset();
  EXPECT_TRUE(waitForEnd());
}

TEST_F(SpawnedProcessesTest, SeveralProgramsRunSideBySide) {
  const fs::path first = folder.path() / "first";
  std::promise<void> firstEnded;
  // The first one ends only when the second has run.
  ASSERT_TRUE(processes->launch(
      "/bin/sh", {"-c", "while ! [ -e $0 ]; do sleep 0.01; done; echo > $1", out.string(), first.string()},
      [&] { firstEnded.set_value(); }));
  ASSERT_TRUE(run("echo > $1"));
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(firstEnded.get_future().wait_for(patience), std::future_status::ready);
  EXPECT_TRUE(fs::exists(first));
}

}  // namespace
}  // namespace lumiwren
