#include "platform/linux/screencapture/NewFile.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <iterator>
#include <system_error>

namespace lumiwren::testing {
namespace {

namespace fs = std::filesystem;

const Bytes content(100'000, 0x5a);

Bytes contentOf(const fs::path &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::error_code failure(const std::function<void()> &action) {
  try {
    action();
  } catch (const std::system_error &error) {
    return error.code();
  }
  return {};
}

class NewFileTest : public ::testing::TestWithParam<NewFile::Way> {
protected:
  std::ptrdiff_t count() const {
    return std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator());
  }

  TemporaryFolder folder_;
  const fs::path path_ = folder_.path() / "picture.png";
};

TEST_P(NewFileTest, IsThereCompleteAndForTheUserOnly) {
  for (const mode_t mask : {0U, 022U, 0777U}) {
    const mode_t before = umask(mask);
    NewFile file(path_, GetParam());
    EXPECT_EQ(file.way(), GetParam());
    EXPECT_EQ(count(), 0);
    file.complete(content);
    umask(before);
    struct stat status = {};
    ASSERT_EQ(lstat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, mode_t{S_IFREG | 0600});
    EXPECT_EQ(status.st_nlink, 1U);
    EXPECT_EQ(contentOf(path_), content);
    EXPECT_EQ(count(), 1);
    fs::remove(path_);
  }
}

TEST_P(NewFileTest, NothingIsLeftWhenItIsNotCompleted) {
  { const NewFile file(path_, GetParam()); }
  EXPECT_EQ(count(), 0);
}

TEST_P(NewFileTest, WhatIsThereStays) {
  std::ofstream(path_) << "mine";
  EXPECT_EQ(failure([&] { NewFile(path_, GetParam()); }), std::errc::file_exists);
  EXPECT_EQ(contentOf(path_), (Bytes{'m', 'i', 'n', 'e'}));
}

TEST_P(NewFileTest, WhatHasComeMeanwhileStays) {
  NewFile file(path_, GetParam());
  std::ofstream(path_) << "mine";
  EXPECT_EQ(failure([&] { file.complete(content); }), std::errc::file_exists);
  EXPECT_EQ(contentOf(path_), (Bytes{'m', 'i', 'n', 'e'}));
  EXPECT_EQ(count(), 1);
}

TEST_P(NewFileTest, ALinkIsNotFollowed) {
  const fs::path target = folder_.path() / "target";
  fs::create_symlink(target, path_);
  EXPECT_EQ(failure([&] { NewFile(path_, GetParam()); }), std::errc::file_exists);
  fs::remove(path_);
  NewFile file(path_, GetParam());
  fs::create_symlink(target, path_);
  EXPECT_EQ(failure([&] { file.complete(content); }), std::errc::file_exists);
  EXPECT_FALSE(fs::exists(target));
  EXPECT_TRUE(fs::is_symlink(path_));
}

TEST_P(NewFileTest, AFolderThatIsNotThereIsAnErrorAtOnce) {
  EXPECT_EQ(failure([&] { NewFile(folder_.path() / "none" / "picture.png", GetParam()); }),
            std::errc::no_such_file_or_directory);
  EXPECT_EQ(failure([&] { NewFile("", GetParam()); }), std::errc::no_such_file_or_directory);
  EXPECT_EQ(failure([&] { NewFile(folder_.path() / "", GetParam()); }), std::errc::is_a_directory);
}

/// The exit status of what a child process does as an ordinary user.
int asOrdinaryUser(const std::function<int()> &action) {
  const pid_t child = fork();
  if (child == 0) {
    constexpr uid_t nobody = 65534;
    _exit(setresgid(nobody, nobody, nobody) == 0 && setresuid(nobody, nobody, nobody) == 0 ? action() : 100);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST_P(NewFileTest, AFolderThatMayNotBeWrittenIsAnErrorAtOnce) {
  fs::permissions(folder_.path(), fs::perms{0755});
  EXPECT_EQ(asOrdinaryUser([&] {
              return failure([&] { NewFile(path_, GetParam()); }) == std::errc::permission_denied ? 0 : 1;
            }),
            0);
}

TEST_P(NewFileTest, WorksForAnOrdinaryUser) {
  fs::permissions(folder_.path(), fs::perms{01777});
  EXPECT_EQ(asOrdinaryUser([&] {
              NewFile(path_, GetParam()).complete(content);
              return 0;
            }),
            0);
  EXPECT_EQ(contentOf(path_), content);
}

INSTANTIATE_TEST_SUITE_P(Ways, NewFileTest, ::testing::Values(NewFile::Way::Unnamed, NewFile::Way::Temporary),
                         [](const auto &parameter) {
                           return parameter.param == NewFile::Way::Unnamed ? "Unnamed" : "Temporary";
                         });

TEST(NewFile, NothingIsLeftOfAKilledProcess) {
  const TemporaryFolder folder;
  const fs::path path = folder.path() / "picture.png";
  const pid_t child = fork();
  if (child == 0) {
    // Dies in the middle of writing: of more than a file may have.
    signal(SIGXFSZ, SIG_DFL);
    const rlimit most{.rlim_cur = 50'000, .rlim_max = 50'000};
    setrlimit(RLIMIT_FSIZE, &most);
    NewFile(path).complete(content);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 0);
}

TEST(NewFile, ADiskThatIsFullLeavesNothing) {
  for (const auto way : {NewFile::Way::Unnamed, NewFile::Way::Temporary}) {
    const TemporaryFolder folder;
    const pid_t child = fork();
    if (child == 0) {
      signal(SIGXFSZ, SIG_IGN);
      const rlimit most{.rlim_cur = 50'000, .rlim_max = 50'000};
      setrlimit(RLIMIT_FSIZE, &most);
      const auto error = failure([&] { NewFile(folder.path() / "picture.png", way).complete(content); });
      _exit(error == std::errc::file_too_large ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 0);
  }
}

}  // namespace
}  // namespace lumiwren::testing
