#include "platform/linux/updates/PrivateFolder.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <system_error>

namespace lumiwren {
namespace {

namespace fs = std::filesystem;

class PrivateFolderTest : public ::testing::Test {
protected:
  static unsigned modeOf(const fs::path &path) {
    return static_cast<unsigned>(fs::status(path).permissions());
  }

  const testing::TemporaryFolder temporary;
  const fs::path path = temporary.path() / "cache" / "updates";
  const PrivateFolder folder{path};
};

TEST_F(PrivateFolderTest, FoldersAndFileAreForTheUserOnlyWhateverTheMask) {
  const auto before = ::umask(0);
  const auto file = folder.makeFile("a.deb");
  ::umask(before);
  EXPECT_EQ(modeOf(file->path()), 0600U);
  EXPECT_EQ(modeOf(file->path().parent_path()), 0700U);
  EXPECT_EQ(modeOf(path), 0700U);
  EXPECT_EQ(file->path().filename(), "a.deb");
}

TEST_F(PrivateFolderTest, AFolderThatOthersCouldEnterIsClosed) {
  fs::create_directories(path);
  fs::permissions(path, fs::perms::all);
  const auto file = folder.makeFile("a.deb");
  EXPECT_EQ(modeOf(path), 0700U);
}

TEST_F(PrivateFolderTest, ALinkInTheFoldersPlaceIsNotFollowed) {
  const auto elsewhere = temporary.path() / "elsewhere";
  fs::create_directories(elsewhere);
  fs::create_directories(path.parent_path());
  fs::create_directory_symlink(elsewhere, path);
  EXPECT_THROW(folder.makeFile("a.deb"), std::system_error);
  folder.clear();
  EXPECT_TRUE(fs::exists(elsewhere));
}

TEST_F(PrivateFolderTest, AFileHoldsWhatWasWrittenAndIsGoneWithItsObject) {
  fs::path place;
  {
    const auto file = folder.makeFile("a.deb");
    place = file->path();
    file->write("one ");
    file->write("two");
    EXPECT_EQ(MappedFile(place).bytes(), "one two");
  }
  EXPECT_FALSE(fs::exists(place));
  EXPECT_TRUE(fs::is_empty(path));
}

TEST_F(PrivateFolderTest, AnEmptyFileHasNoBytes) {
  const auto file = folder.makeFile("a.deb");
  EXPECT_EQ(MappedFile(file->path()).bytes(), "");
  EXPECT_THROW(MappedFile(path / "none"), std::system_error);
}

TEST_F(PrivateFolderTest, AKeptFileStaysUntilTheFolderIsCleared) {
  fs::path place;
  {
    const auto file = folder.makeFile("a.deb");
    file->keep();
    place = file->path();
  }
  EXPECT_TRUE(fs::exists(place));
  folder.clear();
  EXPECT_FALSE(fs::exists(place));
  folder.clear();
}

TEST_F(PrivateFolderTest, AFileThatAnotherSessionIsWritingIsNotCleared) {
  const auto file = folder.makeFile("a.deb");
  fs::path kept;
  {
    const auto ended = folder.makeFile("b.deb");
    ended->keep();
    kept = ended->path();
  }
  PrivateFolder(path).clear();
  EXPECT_TRUE(fs::exists(file->path()));
  EXPECT_FALSE(fs::exists(kept));
}

TEST_F(PrivateFolderTest, WhatDoesNotBelongIntoTheFolderIsClearedToo) {
  fs::create_directories(path / "half" / "a package");
  std::ofstream(path / "stray");
  folder.clear();
  EXPECT_TRUE(!fs::exists(path) || fs::is_empty(path));
}

TEST_F(PrivateFolderTest, TwoFilesOfOneNameDoNotMeet) {
  const auto one = folder.makeFile("a.deb");
  {
    const auto other = folder.makeFile("a.deb");
    EXPECT_NE(one->path(), other->path());
  }
  EXPECT_TRUE(fs::exists(one->path()));
}

}  // namespace
}  // namespace lumiwren
