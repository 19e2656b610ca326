#include "support/XServer.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace lumiwren::testing {
namespace {

std::string dimensions(const XServer &server) {
  Process info(Process::Options{.command = {"xdpyinfo"}, .environment = server.environment()});
  while (const auto line = info.readLine()) {
    if (line->find("dimensions:") != std::string::npos) {
      return *line;
    }
  }
  return {};
}

TEST(XServer, ComesUpInTheSizeAskedForBesideOthers) {
  const XServer first({.width = 800, .height = 600});
  const XServer second({.width = 1000, .height = 700});
  EXPECT_NE(first.display(), second.display());
  EXPECT_NE(dimensions(first).find("800x600"), std::string::npos);
  EXPECT_NE(dimensions(second).find("1000x700"), std::string::npos);
}

TEST(XServer, RunsInsideAnother) {
  const XServer host;
  const auto nested = XServer::nestedIn(host, {.width = 640, .height = 480});
  EXPECT_NE(dimensions(nested).find("640x480"), std::string::npos);
}

TEST(XServer, EndsWithATestThatDies) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t test = fork();
  if (test == 0) {
    XServer server;
    const pid_t pid = server.process().pid();
    if (write(ends[1], &pid, sizeof pid) != sizeof pid) {
      _exit(1);
    }
    pause();
    _exit(1);
  }
  pid_t server = 0;
  ASSERT_EQ(read(ends[0], &server, sizeof server), static_cast<ssize_t>(sizeof server));
  const ProcessWatch watch(server);
  kill(test, SIGKILL);
  waitpid(test, nullptr, 0);
  EXPECT_TRUE(watch.waitForEnd());
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
}  // namespace lumiwren::testing
