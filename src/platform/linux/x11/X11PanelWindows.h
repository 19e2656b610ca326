#pragma once

#include "platform/PanelWindows.h"
#include "platform/linux/x11/X11Connection.h"

#include <xcb/xcb.h>

#include <map>
#include <optional>

namespace lumiwren {

/// The focus and the place of windows that the X window manager does not manage. Opens a connection of its
/// own with the first use; where there is no X server it does nothing.
class X11PanelWindows : public PanelWindows {
public:
  explicit X11PanelWindows(double pixelsPerPoint);
  X11PanelWindows(const X11PanelWindows &) = delete;
  X11PanelWindows &operator=(const X11PanelWindows &) = delete;
  ~X11PanelWindows() override;

  bool isTranslucencySupported() override;
  void makeKey(NativeWindow window) override;
  void resignKey(NativeWindow window) override;
  Rect frame(NativeWindow window) override;

private:
  /// Who had the focus before a window of ours, and when it was taken.
  struct Previous {
    xcb_window_t window;
    xcb_timestamp_t taken;
  };

  bool isConnected();
  xcb_window_t focusedWindow();
  xcb_timestamp_t serverTime();
  void drainEvents();

  const double pixelsPerPoint_;
  std::optional<X11Connection> connection_;
  xcb_window_t ownWindow_ = XCB_NONE;  // never mapped; its property changes tell the server's time
  xcb_atom_t compositorSelection_ = XCB_NONE;
  std::map<NativeWindow, Previous> previous_;
};

}  // namespace lumiwren
