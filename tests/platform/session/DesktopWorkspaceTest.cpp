#include "platform/linux/session/DesktopWorkspace.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace lumiwren {
namespace {

namespace fs = std::filesystem;

constexpr char privacySettings[] =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture";

/// A desktop whose programs are scripts that leave a note.
class DesktopWorkspaceTest : public ::testing::Test {
protected:
  DesktopWorkspaceTest() { qputenv("PATH", QByteArray::fromStdString(folder.path().string())); }
  ~DesktopWorkspaceTest() override {
    qputenv("PATH", path);
    qunsetenv("XDG_CURRENT_DESKTOP");
  }

  void install(const std::string &program) const {
    const auto file = folder.path() / program;
    std::ofstream(file) << "#!/bin/sh\necho \"$0 $*\" > " << (folder.path() / "writing").string()
                        << "; /bin/mv " << (folder.path() / "writing").string() << " " << note.string();
    fs::permissions(file, fs::perms::owner_all);
  }
  std::string started() const {
    while (!fs::exists(note)) {
      std::this_thread::yield();
    }
    std::ifstream file(note);
    std::string line;
    std::getline(file, line);
    return fs::path(line).filename().string();
  }

  const QByteArray path = qgetenv("PATH");
  const testing::TemporaryFolder folder;
  const fs::path note = folder.path() / "note";
  DesktopWorkspace workspace;
};

TEST_F(DesktopWorkspaceTest, ThePrivacySettingsOpenInTheDesktopsOwnProgram) {
  qputenv("XDG_CURRENT_DESKTOP", "Debian:GNOME");
  install("xfce4-settings-manager");
  install("gnome-control-center");
  EXPECT_TRUE(workspace.openURL(privacySettings));
  EXPECT_EQ(started(), "gnome-control-center privacy");
}

TEST_F(DesktopWorkspaceTest, ASettingsProgramMayHaveNoPageForThem) {
  qputenv("XDG_CURRENT_DESKTOP", "XFCE");
  install("xfce4-settings-manager");
  EXPECT_TRUE(workspace.openURL(privacySettings));
  EXPECT_EQ(started(), "xfce4-settings-manager ");
}

TEST_F(DesktopWorkspaceTest, AnotherDesktopsProgramIsNotStarted) {
  qputenv("XDG_CURRENT_DESKTOP", "XFCE");
  install("gnome-control-center");
  EXPECT_FALSE(workspace.openURL(privacySettings));
}

TEST_F(DesktopWorkspaceTest, ADesktopWithoutSettingsHasNone) {
  qunsetenv("XDG_CURRENT_DESKTOP");
  EXPECT_FALSE(workspace.openURL(privacySettings));
}

TEST_F(DesktopWorkspaceTest, WhatIsNoAddressIsNotOpened) {
  EXPECT_FALSE(workspace.openURL("not an address"));
}

}  // namespace
}  // namespace lumiwren
