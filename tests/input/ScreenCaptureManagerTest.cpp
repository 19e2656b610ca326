#include "input/ScreenCaptureManager.h"

#include "base/Task.h"
#include "base/UUID.h"
#include "platform/testing/FakeChildProcesses.h"
#include "platform/testing/FakeScreenRecording.h"
#include "platform/testing/FakeWorkspace.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace lumiwren {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

constexpr std::string_view png = "\x89PNG\r\n\x1a\nwhat follows is none of its business";

class ScreenCaptureManagerTest : public ::testing::Test {
protected:
  ~ScreenCaptureManagerTest() override { EXPECT_TRUE(Task::endAll(std::chrono::seconds(10))); }

  void capture() {
    manager->captureRegion([this](std::optional<Image> image, std::optional<Point> point) {
      EXPECT_FALSE(point);
      EXPECT_EQ(std::this_thread::get_id(), mainThread);
      images.push_back(std::move(image));
    });
  }
  fs::path path(std::size_t number = 0) { return processes.launched.at(number).arguments.at(2); }
  static void write(const fs::path &path, std::string_view content) { std::ofstream(path) << content; }
  /// The tool ends on a thread of its own.
  void endTool(std::size_t number = 0) {
    std::thread([&] { processes.end(number); }).join();
  }
  std::vector<fs::path> files() const {
    return {fs::directory_iterator(folder.path()), fs::directory_iterator()};
  }

  const std::thread::id mainThread = std::this_thread::get_id();
  const testing::TemporaryFolder folder;
  testing::FakeScreenRecording screenRecording;
  testing::FakeChildProcesses processes;
  testing::FakeWorkspace workspace;
  MainQueue queue;
  std::optional<ScreenCaptureManager> manager{std::in_place, screenRecording, processes,
                                              workspace,     queue,           folder.path()};
  std::vector<std::optional<Image>> images;
};

TEST_F(ScreenCaptureManagerTest, RunsTheToolWithThreeArguments) {
  capture();
  ASSERT_THAT(processes.launched, SizeIs(1));
  EXPECT_EQ(processes.launched[0].executable, screenRecording.tool());
  EXPECT_THAT(processes.launched[0].arguments, ElementsAre("-i", "-s", path().string()));
}

TEST_F(ScreenCaptureManagerTest, TheFileIsNamedByAFreshUpperCaseUUID) {
  capture();
  EXPECT_EQ(path().parent_path(), folder.path());
  const std::string name = path().filename().string();
  EXPECT_THAT(name, MatchesRegex("glintnote_capture_[-0-9A-F]{36}\\.png"));
  EXPECT_TRUE(UUID::parse(name.substr(18, 36)));
}

TEST_F(ScreenCaptureManagerTest, CapturesAreLeftInTheSystemsFolderForTemporaryFiles) {
  manager.emplace(screenRecording, processes, workspace, queue);
  capture();
  EXPECT_EQ(path().parent_path(), "/tmp");
}

TEST_F(ScreenCaptureManagerTest, TwoCapturesNeverShareAFileName) {
  std::set<fs::path> paths;
  for (std::size_t number = 0; number < 100; ++number) {
    capture();
    paths.insert(path(number));
  }
  EXPECT_EQ(paths.size(), 100U);
}

TEST_F(ScreenCaptureManagerTest, ThePictureIsHandedOverFromTheMainQueueAndItsFileIsGone) {
  capture();
  write(path(), png);
  endTool();
  EXPECT_THAT(images, IsEmpty());
  queue.runPending();
  ASSERT_THAT(images, SizeIs(1));
  ASSERT_TRUE(images[0]);
  EXPECT_EQ(std::string(images[0]->file.begin(), images[0]->file.end()), png);
  EXPECT_THAT(files(), IsEmpty());
}

TEST_F(ScreenCaptureManagerTest, TheFileIsGoneBeforeThePictureIsUsed) {
  manager->captureRegion(
      [&](const std::optional<Image> &, std::optional<Point>) { EXPECT_THAT(files(), IsEmpty()); });
  write(path(), png);
  endTool();
  queue.runPending();
}

TEST_F(ScreenCaptureManagerTest, ACancelledSelectionGivesNoPictureAndLeavesNoFile) {
  capture();
  endTool();
  queue.runPending();
  EXPECT_THAT(images, ElementsAre(std::nullopt));
  EXPECT_THAT(files(), IsEmpty());
}

TEST_F(ScreenCaptureManagerTest, AFileThatIsNoPictureGivesNoneAndIsRemoved) {
  for (const std::string_view content :
       {"", "\x89PNG", "BM this is something else", "\x89PNG\n\x1a\n......"}) {
    SCOPED_TRACE(content);
    images.clear();
    processes.launched.clear();
    capture();
    write(path(), content);
    endTool();
    queue.runPending();
    ASSERT_THAT(images, SizeIs(1));
    EXPECT_FALSE(images[0]);
    EXPECT_THAT(files(), IsEmpty());
  }
}

TEST_F(ScreenCaptureManagerTest, AToolThatCannotBeStartedGivesNoPictureInPlace) {
  processes.canLaunch = false;
  capture();
  EXPECT_THAT(images, ElementsAre(std::nullopt));
  queue.runPending();
  EXPECT_THAT(images, SizeIs(1));
}

TEST_F(ScreenCaptureManagerTest, AQuitBeforeThePictureIsLoadedRemovesItsFile) {
  capture();
  write(path(), png);
  endTool();
  queue.close();
  EXPECT_THAT(images, IsEmpty());
  EXPECT_THAT(files(), IsEmpty());
}

TEST_F(ScreenCaptureManagerTest, AnEndedManagerStillDelivers) {
  capture();
  manager.reset();
  write(path(), png);
  endTool();
  queue.runPending();
  EXPECT_THAT(images, SizeIs(1));
  EXPECT_THAT(files(), IsEmpty());
}

TEST_F(ScreenCaptureManagerTest, OpensThePrivacySettings) {
  EXPECT_TRUE(manager->requestScreenRecordingPermission());
  EXPECT_THAT(workspace.opened,
              ElementsAre("x-apple.systempreferences:com.apple.preference.security?Privacy_ScreenCapture"));
  workspace.canOpen = false;
  EXPECT_FALSE(manager->requestScreenRecordingPermission());
}

class StaleCaptures : public ScreenCaptureManagerTest {
protected:
  static constexpr char name[] = "glintnote_capture_0F0E0D0C-0B0A-4908-8706-050403020100.png";

  /// A file that was written before the manager was made.
  fs::path leave(const std::string &fileName) const {
    const auto file = folder.path() / fileName;
    write(file, png);
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
    return file;
  }
  void clean() {
    const Task task = manager->removeStaleCaptures();
    while (task.isRunning()) {
      std::this_thread::yield();
    }
  }
};

TEST_F(StaleCaptures, AreRemoved) {
  leave(name);
  leave("glintnote_capture_AF0E0D0C-0B0A-4908-8706-050403020100.png");
  clean();
  EXPECT_THAT(files(), IsEmpty());
}

TEST_F(StaleCaptures, NothingElseIsTouched) {
  const auto otherName = leave("glintnote_capture_notes.png");
  const auto otherKind = leave("glintnote_capture_0F0E0D0C-0B0A-4908-8706-050403020100.txt");
  const auto folderOfThatName = folder.path() / "glintnote_capture_1F0E0D0C-0B0A-4908-8706-050403020100.png";
  fs::create_directory(folderOfThatName);
  const auto link = folder.path() / "glintnote_capture_2F0E0D0C-0B0A-4908-8706-050403020100.png";
  fs::create_symlink(otherName, link);
  clean();
  EXPECT_THAT(files(), ::testing::UnorderedElementsAre(otherName, otherKind, folderOfThatName, link));
}

TEST_F(StaleCaptures, ACaptureOfThisRunStays) {
  capture();
  write(path(), png);
  fs::last_write_time(path(), fs::file_time_type::clock::now());
  const auto stale = leave(name);
  clean();
  EXPECT_FALSE(fs::exists(stale));
  EXPECT_TRUE(fs::exists(path()));
}

TEST_F(StaleCaptures, AFolderThatIsNotThereDoesNoHarm) {
  const auto kept = leave(name);
  manager.emplace(screenRecording, processes, workspace, queue, folder.path() / "missing");
  clean();
  EXPECT_TRUE(fs::exists(kept));
}

}  // namespace
}  // namespace lumiwren
