#include "platform/linux/JSONUserDefaults.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace lumiwren {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

std::string contentOf(const fs::path &file) {
  std::ifstream stream(file, std::ios::binary);
  EXPECT_TRUE(stream) << file;
  std::stringstream content;
  content << stream.rdbuf();
  return content.str();
}

void writeTo(const fs::path &file, const std::string &content) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

unsigned modeOf(const fs::path &file) {
  struct stat status = {};
  EXPECT_EQ(::stat(file.c_str(), &status), 0) << file;
  return status.st_mode & 07777U;
}

std::vector<std::string> namesIn(const fs::path &folder) {
  std::vector<std::string> names;
  for (const auto &entry : fs::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

template <typename Act>
std::string printedBy(Act act) {
  ::testing::internal::CaptureStdout();
  act();
  return ::testing::internal::GetCapturedStdout();
}

/// Permissions do not bind root, as whom tests may run; while this lives they bind this process too.
class OrdinaryUser {
public:
  OrdinaryUser() {
    if (::geteuid() == 0) {
      constexpr uid_t nobody = 65534;
      EXPECT_EQ(::seteuid(nobody), 0);
    }
  }
  OrdinaryUser(const OrdinaryUser &) = delete;
  OrdinaryUser &operator=(const OrdinaryUser &) = delete;
  ~OrdinaryUser() {
    if (::getuid() == 0) {
      EXPECT_EQ(::seteuid(0), 0);
    }
  }
};

class JSONUserDefaultsTest : public ::testing::Test {
protected:
  fs::path folder() const { return root_.path() / "config" / "lumiwren"; }
  fs::path file() const { return folder() / "defaults.json"; }
  json stored() const { return json::parse(contentOf(file())); }

  testing::TemporaryFolder root_;
};

TEST_F(JSONUserDefaultsTest, ReadingAloneCreatesNothing) {
  EXPECT_EQ(printedBy([&] { EXPECT_FALSE(JSONUserDefaults(file()).boolForKey("key")); }), "");
  EXPECT_FALSE(fs::exists(root_.path() / "config"));
}

TEST_F(JSONUserDefaultsTest, AChangeIsInTheFileWhenTheCallReturns) {
  JSONUserDefaults defaults(file());
  defaults.setBool("flag", true);
  EXPECT_EQ(stored(), json({{"flag", true}}));
  defaults.setData("text", "é\n");
  defaults.setData("bytes", "\xFF\xFE");
  EXPECT_EQ(stored(), json({{"flag", true}, {"text", "é\n"}, {"bytes", {{"base64", "//4="}}}}));
  defaults.setBool("flag", false);
  EXPECT_EQ(stored().at("flag"), false);

  JSONUserDefaults later(file());
  EXPECT_EQ(later.dataForKey("text"), "é\n");
  EXPECT_EQ(later.dataForKey("bytes"), "\xFF\xFE");
}

TEST_F(JSONUserDefaultsTest, FoldersAndFileAreForTheUserOnly) {
  const auto previous = ::umask(0);
  JSONUserDefaults(file()).setBool("flag", true);
  ::umask(previous);
  EXPECT_EQ(modeOf(root_.path() / "config"), 0700U);
  EXPECT_EQ(modeOf(folder()), 0700U);
  EXPECT_EQ(modeOf(file()), 0600U);
}

TEST_F(JSONUserDefaultsTest, AFileOpenToOthersIsClosedToThemByTheNextChange) {
  writeTo(file(), "{}");
  fs::permissions(file(), static_cast<fs::perms>(0644));
  JSONUserDefaults(file()).setBool("flag", true);
  EXPECT_EQ(modeOf(file()), 0600U);
}

TEST_F(JSONUserDefaultsTest, NothingButTheFileStaysInTheFolder) {
  JSONUserDefaults defaults(file());
  for (int count = 0; count < 5; ++count) {
    defaults.setData("count", std::to_string(count));
  }
  EXPECT_THAT(namesIn(folder()), ElementsAre("defaults.json"));
}

TEST_F(JSONUserDefaultsTest, WhatAProcessLeftThatWasKilledWhileItWroteIsRemovedAtTheNextStart) {
  writeTo(file(), "{}");
  writeTo(folder() / ".defaults.json.figcJo", "{ half a");
  writeTo(folder() / ".defaults.json.swp", "an editor's");
  writeTo(folder() / ".other.json.figcJo", "somebody else's");
  JSONUserDefaults defaults(file());
  EXPECT_THAT(namesIn(folder()), ElementsAre(".defaults.json.swp", ".other.json.figcJo", "defaults.json"));
}

TEST_F(JSONUserDefaultsTest, ForeignKeysValuesAndTheirOrderAreKept) {
  writeTo(file(), R"({"zeta": {"b": [1, 2.5, null], "a": "é"}, "flag": "not a boolean", "alpha": []})");
  JSONUserDefaults defaults(file());
  EXPECT_FALSE(defaults.boolForKey("flag"));
  defaults.setBool("new", true);
  EXPECT_EQ(nlohmann::ordered_json::parse(contentOf(file())).dump(),
            R"({"zeta":{"b":[1,2.5,null],"a":"é"},"flag":"not a boolean","alpha":[],"new":true})");
}

TEST_F(JSONUserDefaultsTest, ReadsAListOfTextsThatAUserHasWritten) {
  writeTo(file(), R"({"terminals": ["Kitty", "foot", 7, null, "é"], "text": "a", "empty": []})");
  JSONUserDefaults defaults(file());
  EXPECT_THAT(defaults.stringArrayForKey("terminals"), ElementsAre("Kitty", "foot", "é"));
  EXPECT_THAT(defaults.stringArrayForKey("text"), IsEmpty());
  EXPECT_THAT(defaults.stringArrayForKey("empty"), IsEmpty());
}

TEST_F(JSONUserDefaultsTest, OnlyTheObjectFormOfBytesIsData) {
  writeTo(
      file(),
      R"({"a": {"base64": "//4="}, "b": {"base64": "//4"}, "c": {"base64": 7}, "d": {"base64": "", "x": 1},
                      "e": {}, "f": [], "g": 1, "h": {"base64": "//4=\n"}, "i": {"base64": ""}})");
  JSONUserDefaults defaults(file());
  EXPECT_EQ(defaults.dataForKey("a"), "\xFF\xFE");
  EXPECT_EQ(defaults.dataForKey("i"), "");
  for (const auto *key : {"b", "c", "d", "e", "f", "g", "h"}) {
    EXPECT_FALSE(defaults.dataForKey(key)) << key;
  }
}

TEST_F(JSONUserDefaultsTest, WhatAUserEditsWhileTheProgramRunsIsNotLost) {
  JSONUserDefaults defaults(file());
  defaults.setBool("flag", true);
  writeTo(file(), R"({"flag": false, "terminals": ["foot"]})");
  defaults.setData("text", "a");
  EXPECT_EQ(stored(), json({{"flag", false}, {"terminals", {"foot"}}, {"text", "a"}}));
  EXPECT_FALSE(defaults.boolForKey("flag"));
}

TEST_F(JSONUserDefaultsTest, AFileDeletedWhileTheProgramRunsIsWrittenAgainWhole) {
  JSONUserDefaults defaults(file());
  defaults.setBool("flag", true);
  fs::remove_all(folder());
  defaults.setBool("flag", true);
  EXPECT_EQ(stored(), json({{"flag", true}}));
}

TEST_F(JSONUserDefaultsTest, AValueThatIsStoredAlreadyIsNotWrittenAgain) {
  JSONUserDefaults defaults(file());
  defaults.setBool("flag", true);
  defaults.setData("text", "a");
  const auto inode = [&] {
    struct stat status = {};
    EXPECT_EQ(::stat(file().c_str(), &status), 0);
    return status.st_ino;
  };
  const fs::path second = folder() / "second name";
  fs::create_hard_link(file(), second);  // keeps the number of the file's first version from being used again
  const auto before = inode();
  defaults.setBool("flag", true);
  defaults.setData("text", "a");
  EXPECT_EQ(inode(), before);
  defaults.setData("text", "b");
  EXPECT_NE(inode(), before);
}

class UnreadableUserDefaultsTest : public JSONUserDefaultsTest,
                                   public ::testing::WithParamInterface<std::string> {};

TEST_P(UnreadableUserDefaultsTest, IsSetAsideReportedAndReplaced) {
  writeTo(file(), GetParam());
  const auto printed = printedBy([&] {
    JSONUserDefaults defaults(file());
    EXPECT_FALSE(defaults.dataForKey("key"));
    defaults.setBool("flag", true);
  });
  EXPECT_THAT(printed, StartsWith("Failed to load the settings in " + file().string() + ": not "));
  EXPECT_THAT(printed, EndsWith("; kept as " + file().string() + ".unreadable\n"));
  EXPECT_EQ(printed.find('\n'), printed.size() - 1);
  EXPECT_EQ(contentOf(file().string() + ".unreadable"), GetParam());
  EXPECT_EQ(stored(), json({{"flag", true}}));
}

INSTANTIATE_TEST_SUITE_P(Contents, UnreadableUserDefaultsTest,
                         ::testing::Values("", "{", "[]", "null", "\"text\"", "{\"key\": \"value\"} x",
                                           "{\"key\": 1e400}", "{\"key\": \"caf\xE9\"}",
                                           "{\"key\": \"line\nbreak\"}", std::string("\0{}", 3)));

TEST_F(JSONUserDefaultsTest, AFileThatIsNestedTooDeeplyIsSetAside) {
  writeTo(file(), "{\"key\":" + std::string(100'000, '[') + std::string(100'000, ']') + "}");
  EXPECT_THAT(printedBy([&] { JSONUserDefaults(file()).setBool("flag", true); }),
              HasSubstr("nested too deeply"));
  EXPECT_EQ(stored(), json({{"flag", true}}));
}

TEST_F(JSONUserDefaultsTest, AFileSetAsideNeverReplacesAnEarlierOne) {
  for (const auto *content : {"first", "second", "third"}) {
    writeTo(file(), content);
    printedBy([&] { const JSONUserDefaults defaults(file()); });
  }
  EXPECT_EQ(contentOf(file().string() + ".unreadable"), "first");
  EXPECT_EQ(contentOf(file().string() + ".unreadable2"), "second");
  EXPECT_EQ(contentOf(file().string() + ".unreadable3"), "third");
}

TEST_F(JSONUserDefaultsTest, AFileThatTurnsUnreadableWhileTheProgramRunsLosesNoValue) {
  JSONUserDefaults defaults(file());
  defaults.setBool("flag", true);
  writeTo(file(), "{ half an edi");
  EXPECT_THAT(printedBy([&] { defaults.setData("text", "a"); }), HasSubstr("kept as"));
  EXPECT_EQ(stored(), json({{"flag", true}, {"text", "a"}}));
  EXPECT_EQ(contentOf(file().string() + ".unreadable"), "{ half an edi");
}

TEST_F(JSONUserDefaultsTest, AFolderOrPipeInTheFilesPlaceIsSetAside) {
  fs::create_directories(file() / "inside");
  EXPECT_THAT(printedBy([&] { JSONUserDefaults(file()).setBool("flag", true); }),
              HasSubstr("not a regular file"));
  EXPECT_TRUE(fs::is_directory(file().string() + ".unreadable/inside"));

  fs::remove(file());
  ASSERT_EQ(::mkfifo(file().c_str(), 0600), 0);
  EXPECT_THAT(printedBy([&] { JSONUserDefaults(file()).setBool("flag", true); }),
              HasSubstr("not a regular file"));
  EXPECT_EQ(stored(), json({{"flag", true}}));
}

TEST_F(JSONUserDefaultsTest, AFileThatMayNotBeReadIsSetAside) {
  const OrdinaryUser user;
  writeTo(file(), R"({"precious": true})");
  fs::permissions(file(), fs::perms::none);
  EXPECT_THAT(printedBy([&] { JSONUserDefaults(file()).setBool("flag", true); }),
              HasSubstr("Permission denied; kept as"));
  EXPECT_EQ(stored(), json({{"flag", true}}));
  fs::permissions(file().string() + ".unreadable", static_cast<fs::perms>(0600));
  EXPECT_EQ(contentOf(file().string() + ".unreadable"), R"({"precious": true})");
}

TEST_F(JSONUserDefaultsTest, AFileThatCannotBeSetAsideIsNotOverwritten) {
  const OrdinaryUser user;
  writeTo(file(), "broken");
  fs::permissions(folder(), static_cast<fs::perms>(0500));
  std::optional<JSONUserDefaults> defaults;
  EXPECT_THAT(printedBy([&] { defaults.emplace(file()); }),
              HasSubstr("they will not be saved: Permission denied"));
  printedBy([&] { defaults->setBool("flag", true); });
  EXPECT_EQ(contentOf(file()), "broken");
  EXPECT_TRUE(defaults->boolForKey("flag"));

  fs::permissions(folder(), fs::perms::owner_all);
  printedBy([&] { defaults->setData("text", "a"); });
  EXPECT_EQ(stored(), json({{"flag", true}, {"text", "a"}}));
  EXPECT_EQ(contentOf(file().string() + ".unreadable"), "broken");
}

TEST_F(JSONUserDefaultsTest, InAFolderThatCannotBeWrittenNothingIsLost) {
  const OrdinaryUser user;
  JSONUserDefaults defaults(file());
  defaults.setBool("old", true);
  const auto before = contentOf(file());
  fs::permissions(folder(), static_cast<fs::perms>(0500));
  EXPECT_EQ(printedBy([&] { defaults.setBool("flag", true); }),
            "Failed to save the settings in " + file().string() + ": Permission denied\n");
  EXPECT_TRUE(defaults.boolForKey("flag"));
  EXPECT_EQ(contentOf(file()), before);

  fs::permissions(folder(), fs::perms::owner_all);
  defaults.setBool("flag", true);
  EXPECT_EQ(stored(), json({{"old", true}, {"flag", true}}));
}

TEST_F(JSONUserDefaultsTest, AFolderThatCannotBeMadeIsReported) {
  writeTo(root_.path() / "config", "a file");
  JSONUserDefaults defaults(file());
  EXPECT_EQ(printedBy([&] { defaults.setBool("flag", true); }),
            "Failed to save the settings in " + file().string() + ": Not a directory\n");
  EXPECT_TRUE(defaults.boolForKey("flag"));
}

TEST_F(JSONUserDefaultsTest, ADiskThatFillsUpLeavesTheOldFile) {
  JSONUserDefaults defaults(file());
  defaults.setData("text", "old");
  const auto before = contentOf(file());
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
  const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
  // Large enough for the captured output, too small for the new value.
  const rlimit small{.rlim_cur = 100'000, .rlim_max = limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const auto printed = printedBy([&] { defaults.setData("text", std::string(200'000, 'x')); });
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  std::signal(SIGXFSZ, previousHandler);
  EXPECT_THAT(printed, EndsWith(": File too large\n"));
  EXPECT_EQ(contentOf(file()), before);
  EXPECT_THAT(namesIn(folder()), ElementsAre("defaults.json"));
  EXPECT_EQ(defaults.dataForKey("text")->size(), 200'000U);
}

TEST_F(JSONUserDefaultsTest, ALinkedFileIsWrittenThroughItsLinks) {
  const auto repository = root_.path() / "dotfiles";
  writeTo(repository / "lumiwren.json", R"({"old": true})");
  fs::create_directories(folder());
  fs::create_symlink("../../dotfiles/lumiwren.json", folder() / "second");
  fs::create_symlink("second", file());
  JSONUserDefaults defaults(file());
  EXPECT_TRUE(defaults.boolForKey("old"));
  defaults.setBool("flag", true);
  EXPECT_TRUE(fs::is_symlink(file()));
  EXPECT_TRUE(fs::is_symlink(folder() / "second"));
  EXPECT_EQ(json::parse(contentOf(repository / "lumiwren.json")), json({{"old", true}, {"flag", true}}));
  EXPECT_THAT(namesIn(repository), ElementsAre("lumiwren.json"));
}

TEST_F(JSONUserDefaultsTest, ALinkToNothingIsWrittenThrough) {
  const auto target = root_.path() / "target.json";
  fs::create_directories(folder());
  fs::create_symlink(target, file());
  JSONUserDefaults(file()).setBool("flag", true);
  EXPECT_TRUE(fs::is_symlink(file()));
  EXPECT_EQ(json::parse(contentOf(target)), json({{"flag", true}}));
}

TEST_F(JSONUserDefaultsTest, AnUnreadableLinkedFileIsSetAsideWhereItIs) {
  const auto target = root_.path() / "target.json";
  writeTo(target, "broken");
  fs::create_directories(folder());
  fs::create_symlink(target, file());
  printedBy([&] { JSONUserDefaults(file()).setBool("flag", true); });
  EXPECT_EQ(contentOf(target.string() + ".unreadable"), "broken");
  EXPECT_TRUE(fs::is_symlink(file()));
  EXPECT_EQ(stored(), json({{"flag", true}}));
}

TEST_F(JSONUserDefaultsTest, LinksInACircleAreSetAside) {
  fs::create_directories(folder());
  fs::create_symlink("b", folder() / "a");
  fs::create_symlink("a", folder() / "b");
  fs::create_symlink("a", file());
  EXPECT_THAT(printedBy([&] { JSONUserDefaults(file()).setBool("flag", true); }), HasSubstr("kept as"));
  EXPECT_EQ(stored(), json({{"flag", true}}));
}

// The child writes one long value after another, each of one repeated letter, and tells of each; it is killed
// at another point of the third write in each round.
TEST_F(JSONUserDefaultsTest, AKillAtAnyMomentLeavesTheOldOrTheNewFile) {
  using Clock = std::chrono::steady_clock;
  constexpr std::size_t length = 200'000;
  constexpr int rounds = 40;
  for (int round = 0; round < rounds; ++round) {
    int progress[2];
    ASSERT_EQ(::pipe2(progress, O_CLOEXEC), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      JSONUserDefaults defaults(file());
      for (char letter = 'a';; letter = letter == 'z' ? 'a' : static_cast<char>(letter + 1)) {
        defaults.setData("text", std::string(length, letter));
        if (::write(progress[1], &letter, 1) != 1) {
          ::_exit(1);
        }
      }
    }
    ::close(progress[1]);
    char letter = 0;
    ASSERT_EQ(::read(progress[0], &letter, 1), 1);
    const auto begin = Clock::now();
    ASSERT_EQ(::read(progress[0], &letter, 1), 1);
    const auto end = Clock::now();
    const auto moment = end + (end - begin) * round / rounds;
    while (Clock::now() < moment) {
    }
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    ::close(progress[0]);

    const auto text = stored().at("text").get<std::string>();
    ASSERT_EQ(text, std::string(length, text.at(0)));
    ASSERT_FALSE(fs::exists(file().string() + ".unreadable"));
  }
}

class DefaultFileTest : public ::testing::Test {
protected:
  ~DefaultFileTest() override {
    restore("XDG_CONFIG_HOME", config_);
    restore("HOME", home_);
  }
  static std::optional<std::string> get(const char *name) {
    const char *value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
  }
  static void restore(const char *name, const std::optional<std::string> &value) {
    value ? ::setenv(name, value->c_str(), 1) : ::unsetenv(name);
  }

private:
  const std::optional<std::string> config_ = get("XDG_CONFIG_HOME");
  const std::optional<std::string> home_ = get("HOME");
};

TEST_F(DefaultFileTest, IsInTheConfigurationFolder) {
  ::setenv("XDG_CONFIG_HOME", "/somewhere", 1);
  EXPECT_EQ(JSONUserDefaults::defaultFile(), "/somewhere/lumiwren/defaults.json");
}

TEST_F(DefaultFileTest, IsBelowHomeWithoutAnAbsoluteConfigurationFolder) {
  ::setenv("HOME", "/home/someone", 1);
  for (const auto *value : {"", "relative", "./here"}) {
    ::setenv("XDG_CONFIG_HOME", value, 1);
    EXPECT_EQ(JSONUserDefaults::defaultFile(), "/home/someone/.config/lumiwren/defaults.json");
  }
  ::unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(JSONUserDefaults::defaultFile(), "/home/someone/.config/lumiwren/defaults.json");
}

TEST_F(DefaultFileTest, AsksThePasswordDatabaseWithoutAHome) {
  ::unsetenv("XDG_CONFIG_HOME");
  ::unsetenv("HOME");
  const auto file = JSONUserDefaults::defaultFile();
  EXPECT_TRUE(file.is_absolute());
  EXPECT_THAT(file.string(), EndsWith("/.config/lumiwren/defaults.json"));
}

}  // namespace
}  // namespace lumiwren
