#include "platform/x11/pasteboard/PasteboardContract.h"
#include "platform/x11/pasteboard/PasteboardWorld.h"
#include "support/SelectionPattern.h"

#include <unistd.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

namespace lumiwren::testing {
namespace {

using Lines = std::vector<std::string>;

class PasteboardLifetimeTest : public X11PasteboardTest {
protected:
  std::unique_ptr<Process> startProgram() const {
    return world_.start({PASTEBOARD_PROGRAM, world_.holder().string()});
  }

  static void tell(Process &program, const std::string &word, const std::string &answer) {
    program.write(word + "\n");
    EXPECT_TRUE(program.waitForLine(answer));
  }

  /// Empty for a process that has ended.
  static std::optional<pid_t> sessionOf(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string stat;
    std::getline(file, stat, '\0');        // Fails, and does not throw, when the process has just ended.
    const auto nameEnd = stat.rfind(')');  // The name before this may hold anything.
    if (nameEnd == std::string::npos) {
      return std::nullopt;
    }
    std::istringstream rest(stat.substr(nameEnd + 1));
    char state = 0;
    pid_t parent = 0;
    pid_t group = 0;
    pid_t session = 0;
    rest >> state >> parent >> group >> session;
    return session;
  }

  /// Waits until there is a holder that has left the process that was started for it, which leads the
  /// session.
  pid_t waitForHolder() const {
    for (;;) {
      const auto holders = world_.holders();
      const auto session = holders.size() == 1 ? sessionOf(holders[0]) : std::nullopt;
      if (session && *session != holders[0]) {
        return holders[0];
      }
    }
  }

  const Lines everything{"list", "get", "UTF8_STRING", "get", "TEXT", "get", "image/png", "get", "x-atoms"};
  const Lines userOwner{"give",
                        "UTF8_STRING",
                        "UTF8_STRING",
                        "8",
                        "text",
                        "give",
                        "TEXT",
                        "COMPOUND_TEXT",
                        "8",
                        "text",
                        "fill",
                        "image/png",
                        std::to_string(pictureBytes),
                        "give",
                        "x-atoms",
                        "ATOM",
                        "32",
                        "12345678"};
};

TEST_F(PasteboardLifetimeTest, WhatWasPutBackOutlivesAProgramThatQuits) {
  auto owner = world_.startOwner(userOwner);
  const auto program = startProgram();
  const auto values = world_.requestor({everything.begin() + 1, everything.end()});
  tell(*program, "capture", "restored");
  owner.reset();
  const auto before = world_.requestor(everything);
  EXPECT_EQ(Lines(before.begin() + 1, before.end()), values);
  program->closeInput();
  EXPECT_EQ(program->wait(), 0);
  EXPECT_EQ(world_.requestor(everything), before);
}

TEST_F(PasteboardLifetimeTest, WhatWasPutBackOutlivesAProgramThatIsKilled) {
  auto owner = world_.startOwner(userOwner);
  const auto program = startProgram();
  const auto values = world_.requestor({everything.begin() + 1, everything.end()});
  tell(*program, "capture", "restored");
  program->kill(SIGKILL);
  EXPECT_TRUE(program->wait());
  owner.reset();
  const auto after = world_.requestor(everything);
  EXPECT_EQ(Lines(after.begin() + 1, after.end()), values);
}

TEST_F(PasteboardLifetimeTest, AProgramThatIsKilledInTheMiddleOfATransferDoesNotBreakIt) {
  const auto program = startProgram();
  tell(*program, "picture", "put");
  const auto before = world_.requestor({"get", "image/png"});
  const auto stalled = world_.start({SELECTION_REQUESTOR, "stall", "image/png"});
  EXPECT_TRUE(stalled->waitForLine("stalled"));
  program->kill(SIGKILL);
  EXPECT_TRUE(program->wait());
  EXPECT_EQ(world_.requestor({"get", "image/png"}), before);
}

TEST_F(PasteboardLifetimeTest, TheHolderEndsWhenSomebodyElseTakesTheClipboard) {
  const auto program = startProgram();
  tell(*program, "picture", "put");
  program->closeInput();
  EXPECT_EQ(program->wait(), 0);
  const auto holders = world_.holders();
  ASSERT_EQ(holders.size(), 1U);
  const ProcessWatch holder(holders[0]);
  EXPECT_FALSE(holder.waitForEnd(std::chrono::milliseconds(0)));
  const auto owner = world_.startOwner(userOwner);
  EXPECT_TRUE(holder.waitForEnd());
}

TEST_F(PasteboardLifetimeTest, TheHolderEndsWithTheServer) {
  const auto program = startProgram();
  tell(*program, "picture", "put");
  const auto holders = world_.holders();
  ASSERT_EQ(holders.size(), 1U);
  const ProcessWatch holder(holders[0]);
  world_.endServer();
  EXPECT_TRUE(holder.waitForEnd());
}

TEST_F(PasteboardLifetimeTest, AHolderThatHoldsNothingEndsWithTheProgram) {
  const auto owner = world_.startOwner(userOwner);
  const auto program = startProgram();
  tell(*program, "read", "read");
  // A holder is on its way, for what is soon to be put back.
  const ProcessWatch holder(waitForHolder());
  program->kill(SIGKILL);
  EXPECT_TRUE(holder.waitForEnd());
}

TEST_F(PasteboardLifetimeTest, AHolderThatHoldsNothingEndsByItself) {
  const auto program = startProgram();
  tell(*program, "picture", "put");
  const ProcessWatch holder(world_.holders().at(0));
  const auto owner = world_.startOwner({"give", "UTF8_STRING", "UTF8_STRING", "8", "other"});
  EXPECT_TRUE(holder.waitForEnd());
  // The program is none the worse for it.
  tell(*program, "capture", "restored");
  EXPECT_TRUE(owner->waitForLine("lost"));
  EXPECT_EQ(world_.pasteboard().string({}), "other");
}

TEST_F(PasteboardLifetimeTest, CapturesInARowUseOneHolder) {
  auto &pasteboard = world_.pasteboard();
  for (const char *text : {"one", "two", "three"}) {
    const auto owner = world_.startOwner({"give", "UTF8_STRING", "UTF8_STRING", "8", text});
    const auto saved = pasteboard.contents({});
    const auto copying = world_.startOwner({"give", "UTF8_STRING", "UTF8_STRING", "8", "copied"});
    EXPECT_EQ(pasteboard.string({}), "copied");
    pasteboard.setContents(saved, PasteboardLifetime::Lasting);
    EXPECT_EQ(pasteboard.string({}), text);
    EXPECT_EQ(pasteboard.contents({}), saved);
  }
  EXPECT_EQ(world_.holders().size(), 1U);
}

TEST_F(PasteboardLifetimeTest, AHolderThatWasKilledIsReplaced) {
  auto &pasteboard = world_.pasteboard();
  pasteboard.setString("one", PasteboardLifetime::Lasting);
  const auto pid = world_.holders().at(0);
  const ProcessWatch holder(pid);
  kill(pid, SIGKILL);
  EXPECT_TRUE(holder.waitForEnd());
  pasteboard.setString("two", PasteboardLifetime::Lasting);
  EXPECT_EQ(pasteboard.string({}), "two");
}

TEST_F(PasteboardLifetimeTest, TheHolderIsInASessionOfItsOwnAndKeepsNoFileOpen) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  world_.pasteboard().setString("text", PasteboardLifetime::Lasting);
  const auto pid = world_.holders().at(0);
  EXPECT_NE(sessionOf(pid), getsid(0));
  close(ends[1]);
  char byte = 0;
  EXPECT_EQ(read(ends[0], &byte, 1), 0);  // Nobody has the other end open.
  close(ends[0]);
}

TEST_F(PasteboardLifetimeTest, WithoutAUsableHolderTheProgramServesItselfAndSaysSo) {
  for (const char *executable : {"/nonexistent/lumiwren-pasteboard", "/bin/false", "/bin/true"}) {
    ::testing::internal::CaptureStderr();
    {
      X11Pasteboard pasteboard(executable);
      const PasteboardContents contents{{"UTF8_STRING", bytesOf("text")},
                                        {"image/png", patternBytes(pictureBytes)}};
      pasteboard.setContents(contents, PasteboardLifetime::Lasting);
      pasteboard.setContents(contents, PasteboardLifetime::Lasting);
      EXPECT_EQ(pasteboard.contents({}), contents);
      EXPECT_EQ(world_.requestor({"get", "UTF8_STRING"}).size(), 1U);
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              std::string("lumiwren: ") + executable +
                  " cannot be used; what is put on the pasteboard ends with this program\n");
  }
}

TEST(PasteboardHolder, StartedByHandSaysWhoStartsIt) {
  Process holder({"sh", "-c", std::string("exec ") + LUMIWREN_PASTEBOARD + " 2>&1"});
  EXPECT_EQ(holder.readLine(), "lumiwren-pasteboard is started by lumiwren");
  EXPECT_NE(holder.wait().value(), 0);
}

}  // namespace
}  // namespace lumiwren::testing
