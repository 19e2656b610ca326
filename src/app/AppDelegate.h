#pragma once

#include "app/ActionDispatch.h"
#include "app/StatusItem.h"

#include <functional>
#include <optional>

namespace lumiwren {

/// The program's life between its start and its end. Main thread.
class AppDelegate {
public:
  /// `terminate` ends the program's event loop.
  AppDelegate(const ActionDispatch::Services &services, std::function<void()> terminate);

  void applicationDidFinishLaunching();
  void applicationWillTerminate();

private:
  void setupMenuBar();
  void checkAccessibilityPermission();
  void showAccessibilityAlert();
  void showScreenRecordingAlert();

  const ActionDispatch::Services services_;
  const std::function<void()> terminate_;
  std::optional<StatusItem> statusItem_;
  ActionDispatch dispatch_;
  WeakAnchor<AppDelegate> anchor_{this};
};

}  // namespace lumiwren
