#pragma once

#include "platform/linux/x11/X11EventMonitors.h"
#include "platform/linux/x11/X11Pasteboard.h"
#include "platform/linux/x11/X11SelectionCopy.h"
#include "platform/x11/keys/EventProbe.h"
#include "platform/x11/keys/InputDriver.h"
#include "support/Process.h"
#include "support/XServer.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren::testing {

/// A desktop with a window manager and a keyboard that is no injection: the server runs in a window of
/// another one, whose injected keys it takes for those of its own keyboard. In it the whole of what copies a
/// selection, as the program has it.
class CopyDesktop {
public:
  CopyDesktop();
  CopyDesktop(const CopyDesktop &) = delete;
  CopyDesktop &operator=(const CopyDesktop &) = delete;
  ~CopyDesktop();

  /// The keyboard and mouse under the user's hands. What is pressed arrives some time later.
  InputDriver &hands() { return *hands_; }
  /// Asks the desktop's own server about keys.
  InputDriver &server() { return *inside_; }
  EventProbe &probe() { return probe_; }
  X11SelectionCopy &copy() { return *copy_; }
  const std::filesystem::path &directory() const { return directory_; }

  std::unique_ptr<Process> start(std::vector<std::string> command) const;
  void run(std::vector<std::string> command) const;

  /// Waits until the window with this title is in front.
  void waitForFront(std::string_view title);
  /// Clicks into the front window, at a place within it.
  void clickInFront(int x, int y, int times);
  /// Another program puts a text on the clipboard.
  void putOnClipboard(std::string_view text);
  /// Waits until the owner of the selection ("PRIMARY" or "CLIPBOARD") gives this text.
  void waitForSelection(std::string_view selection, std::string_view text);
  /// Waits until every key that was pressed or let go before has arrived, and forgets them. Types a key that
  /// nobody uses.
  void settle();

private:
  /// Looks again with every event of the desktop's own server.
  void waitUntil(std::string_view what, const std::function<bool()> &condition);
  /// For what no event tells of.
  static void pollUntil(std::string_view what, const std::function<bool()> &condition);
  /// Finds the front window.
  bool isInFront(std::string_view title);
  std::string selectionText(std::string_view selection) const;

  std::filesystem::path directory_;
  XServer host_;
  std::unique_ptr<InputDriver> hands_;
  std::unique_ptr<XServer> nested_;
  std::unique_ptr<Process> windowManager_;
  std::unique_ptr<Process> clipboardOwner_;
  std::unique_ptr<InputDriver> inside_;
  std::unique_ptr<X11Connection> watch_;
  xcb_window_t front_ = XCB_NONE;
  EventProbe probe_;
  std::unique_ptr<X11Connection> questions_;
  std::unique_ptr<X11InputChannel> channel_;
  std::unique_ptr<X11Pasteboard> pasteboard_;
  std::unique_ptr<X11EventMonitors> monitors_;
  Handle monitor_;
  std::unique_ptr<X11SelectionCopy> copy_;
};

}  // namespace lumiwren::testing
