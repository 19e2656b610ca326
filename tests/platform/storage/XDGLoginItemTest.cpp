#include "platform/linux/XDGLoginItem.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace lumiwren {
namespace {

namespace fs = std::filesystem;
using Status = LoginItem::Status;

class XDGLoginItemTest : public ::testing::Test {
protected:
  void write(const std::string &content) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << content;
  }
  std::string content() const {
    std::ifstream entry(file);
    return {std::istreambuf_iterator<char>(entry), {}};
  }

  const testing::TemporaryFolder folder;
  const fs::path file = folder.path() / "config" / "autostart" / "lumiwren.desktop";
  XDGLoginItem item{file, "/opt/a program/lumiwren"};
};

TEST_F(XDGLoginItemTest, WhatIsNotThereIsNotRegistered) {
  EXPECT_EQ(item.status(), Status::NotRegistered);
}

TEST_F(XDGLoginItemTest, ARegisteredItemIsEnabledAndAnUnregisteredOneIsGone) {
  item.registerItem();
  EXPECT_EQ(item.status(), Status::Enabled);
  item.registerItem();
  EXPECT_EQ(item.status(), Status::Enabled);
  item.unregisterItem();
  EXPECT_EQ(item.status(), Status::NotRegistered);
  EXPECT_FALSE(fs::exists(file));
}

TEST_F(XDGLoginItemTest, ToUnregisterWhatIsNotThereSucceeds) {
  EXPECT_NO_THROW(item.unregisterItem());
}

TEST_F(XDGLoginItemTest, TheEntryStartsTheProgramAndNothingWhereThereIsNone) {
  item.registerItem();
  EXPECT_NE(content().find("\nExec=\"/opt/a program/lumiwren\"\n"), std::string::npos);
  EXPECT_NE(content().find("\nTryExec=/opt/a program/lumiwren\n"), std::string::npos);
}

TEST_F(XDGLoginItemTest, AnItemThatTheUserHasSwitchedOffIsNotEnabled) {
  for (const char *line : {"Hidden=true", " Hidden = true ", "X-GNOME-Autostart-enabled=false"}) {
    SCOPED_TRACE(line);
    write(std::string("[Desktop Entry]\nType=Application\nExec=lumiwren\n") + line + "\n");
    EXPECT_EQ(item.status(), Status::NotRegistered);
    item.registerItem();
    EXPECT_EQ(item.status(), Status::Enabled);
  }
}

TEST_F(XDGLoginItemTest, OnlyTheEntrysOwnGroupCounts) {
  write("[Desktop Entry]\nExec=lumiwren\n[Desktop Action x]\nHidden=true\n");
  EXPECT_EQ(item.status(), Status::Enabled);
  write("[Desktop Action x]\nExec=lumiwren\n");
  EXPECT_EQ(item.status(), Status::NotRegistered);
}

TEST_F(XDGLoginItemTest, AnEntryWithoutACommandIsNone) {
  for (const char *text : {"", "[Desktop Entry]\n", "[Desktop Entry]\nExec=\n", "\0\xff not an entry"}) {
    write(text);
    EXPECT_EQ(item.status(), Status::NotRegistered);
  }
}

TEST_F(XDGLoginItemTest, ALinkedEntryIsWrittenWhereItLeadsAndOnlyTheLinkIsRemoved) {
  const fs::path target = folder.path() / "elsewhere.desktop";
  fs::create_directories(file.parent_path());
  fs::create_symlink(target, file);
  item.registerItem();
  EXPECT_TRUE(fs::is_regular_file(target));
  EXPECT_EQ(item.status(), Status::Enabled);
  item.unregisterItem();
  EXPECT_FALSE(fs::is_symlink(file));
  EXPECT_TRUE(fs::exists(target));
}

TEST_F(XDGLoginItemTest, AFolderThatCannotBeMadeFails) {
  std::ofstream(folder.path() / "config") << "a file in its place";
  EXPECT_THROW(item.registerItem(), std::system_error);
  EXPECT_EQ(item.status(), Status::NotRegistered);
}

TEST_F(XDGLoginItemTest, WhatCannotBeRemovedFails) {
  fs::create_directories(file / "a folder in its place");
  EXPECT_THROW(item.unregisterItem(), std::system_error);
}

TEST(XDGLoginItemCommand, IsQuotedAndEscaped) {
  EXPECT_EQ(execValue("/usr/bin/lumiwren"), "\"/usr/bin/lumiwren\"");
  EXPECT_EQ(execValue("/a b/50%"), "\"/a b/50%%\"");
  EXPECT_EQ(execValue("/a\"b"), R"("/a\\"b")");
  EXPECT_EQ(execValue("/$HOME`x`"), R"("/\\$HOME\\`x\\`")");
  EXPECT_EQ(execValue(R"(/a\b)"), R"("/a\\\\b")");
}

}  // namespace
}  // namespace lumiwren
