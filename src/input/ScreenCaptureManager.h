#pragma once

#include "base/MainQueue.h"
#include "base/Task.h"
#include "platform/ChildProcesses.h"
#include "platform/Geometry.h"
#include "platform/Image.h"
#include "platform/ScreenRecording.h"
#include "platform/Workspace.h"

#include <filesystem>
#include <functional>
#include <optional>

namespace lumiwren {

/// Lets the user draw a rectangle on the screen, with the screenshot tool, and hands over what it shows.
/// Main thread.
class ScreenCaptureManager {
public:
  /// The picture, when the user has drawn a rectangle. The point is for callers to come and always empty.
  using Completion = std::function<void(std::optional<Image>, std::optional<Point>)>;

  /// `folder` is where the tool leaves its files.
  ScreenCaptureManager(ScreenRecording &screenRecording, ChildProcesses &processes, Workspace &workspace,
                       MainQueue &mainQueue, std::filesystem::path folder = "/tmp");

  /// Returns at once. `completion` is called exactly once: from the main queue when the tool has ended, its
  /// file being gone by then, or in place when the tool cannot be started.
  void captureRegion(const Completion &completion);
  /// Opens the desktop's privacy settings. False when it has none.
  bool requestScreenRecordingPermission();
  /// The task that removes what runs of the program that were killed have left behind: what is on the screen
  /// is nobody else's business.
  Task removeStaleCaptures() const;

private:
  ScreenRecording &screenRecording_;
  ChildProcesses &processes_;
  Workspace &workspace_;
  MainQueue &mainQueue_;
  const std::filesystem::path folder_;
  const std::filesystem::file_time_type begin_ = std::filesystem::file_time_type::clock::now();
};

}  // namespace lumiwren
