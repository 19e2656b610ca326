#pragma once

#include "support/Process.h"
#include "support/XServer.h"

#include <xcb/xcb.h>

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumiwren::testing {

/// Waits for a condition and lets Qt's loop run meanwhile, where there is one. False when it does not come
/// true within patience.
bool waitFor(const std::function<bool()> &condition);

/// An X server with a window manager (a program's name, or "openbox-follow-mouse"), and somebody at its
/// keyboard and mouse. Colours are 0xRRGGBB, places are pixels with y down.
class XDesktop {
public:
  static constexpr int width = 1280;
  static constexpr int height = 800;

  explicit XDesktop(const std::string &windowManager);
  XDesktop(const XDesktop &) = delete;
  XDesktop &operator=(const XDesktop &) = delete;
  ~XDesktop();

  const std::string &display() const { return server_.display(); }

  /// Starts another application with a plain background and waits until it has the focus.
  std::unique_ptr<Process> startApplication(const std::string &geometry, const std::string &color);
  /// The window with the input focus.
  xcb_window_t focused();
  /// What the window manager takes for the window with the focus.
  xcb_window_t active();
  std::uint32_t pixel(int x, int y);

  void setFullScreen(xcb_window_t client, bool fullScreen);
  void setDesktopCount(std::uint32_t count);
  void setCurrentDesktop(std::uint32_t desktop);
  std::uint32_t currentDesktop();

  void moveTo(int x, int y);
  void press();
  void release();
  void click(int x, int y);
  void key(std::uint32_t keysym);

private:
  xcb_atom_t atom(const std::string &name);
  std::optional<std::uint32_t> property(xcb_window_t window, const std::string &name);
  void tellManager(xcb_window_t window, const std::string &type, std::uint32_t first,
                   std::uint32_t second = 0, std::uint32_t third = 0, std::uint32_t fourth = 0);

  XServer server_;
  std::filesystem::path home_;
  xcb_connection_t *connection_ = nullptr;
  const xcb_screen_t *screen_ = nullptr;
  std::unique_ptr<Process> windowManager_;
};

}  // namespace lumiwren::testing
