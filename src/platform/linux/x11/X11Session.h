#pragma once

#include "base/Handle.h"
#include "base/MainQueue.h"
#include "platform/AccessibilityTrust.h"
#include "platform/ApplicationWindows.h"
#include "platform/EventMonitors.h"
#include "platform/PanelWindows.h"
#include "platform/Pasteboard.h"
#include "platform/ScreenRecording.h"
#include "platform/Screens.h"
#include "platform/SelectionCopy.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumiwren {

/// Whether a connection to the server, an xcb_connection_t, is lost. Any thread.
bool isConnectionLost(void *connection);

/// Every facility that an X11 session offers, on connections of their own to the server that DISPLAY names.
class X11Session {
public:
  struct Options {
    void *toolkitConnection;                 // xcb_connection_t, on which the program's windows are made
    double pixelsPerPoint;                   // the toolkit's
    std::filesystem::path holder;            // lumiwren-pasteboard
    std::filesystem::path screenshotTool;    // lumiwren-screencapture
    std::vector<std::string> moreTerminals;  // window classes of terminal emulators that are not known
    /// See X11PanelWindows::WatchReadable.
    std::function<Handle(int fileDescriptor, std::function<void()> readable)> watchReadable;
  };

  X11Session(MainQueue &mainQueue, const Options &options);
  ~X11Session();

  /// See EventMonitors.
  Handle addGlobalMonitor(std::uint32_t mask, EventMonitors::GlobalHandler handler);
  std::uint32_t currentTime();
  Pasteboard &pasteboard();
  SelectionCopy &selectionCopy();
  AccessibilityTrust &accessibilityTrust();
  Screens &screens();
  PanelWindows &panelWindows();
  ApplicationWindows &applicationWindows();
  ScreenRecording &screenRecording();

private:
  struct Facilities;
  const std::unique_ptr<Facilities> facilities_;
};

}  // namespace lumiwren
