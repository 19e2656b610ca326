#pragma once

#include "base/Handle.h"
#include "base/Signal.h"
#include "platform/PanelWindows.h"
#include "platform/linux/x11/X11Connection.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace lumiwren {

/// The focus, the form and the place of windows that the X window manager does not manage. Opens a connection
/// of its own with the first use, for questions and events.
class X11PanelWindows : public PanelWindows {
public:
  /// Has something called in the main loop whenever a file descriptor can be read, while the handle is held.
  using WatchReadable = std::function<Handle(int fileDescriptor, std::function<void()> readable)>;

  /// The toolkit's connection, on which the windows are made, is where they get their form: so it comes in
  /// order with their creation and with changes of their size.
  X11PanelWindows(xcb_connection_t *toolkit, double pixelsPerPoint, WatchReadable watchReadable);
  X11PanelWindows(const X11PanelWindows &) = delete;
  X11PanelWindows &operator=(const X11PanelWindows &) = delete;
  ~X11PanelWindows() override;

  bool isTranslucencySupported() override;
  Handle observeTranslucency(std::function<void()> changed) override;
  void setForm(NativeWindow window, const WindowForm &form) override;
  void makeKey(NativeWindow window) override;
  void resignKey(NativeWindow window) override;
  Rect frame(NativeWindow window) override;
  /// The server's; 0 without one. Main thread.
  std::uint32_t currentTime();

private:
  /// Who had the focus before a window of ours, and when it was taken.
  struct Previous {
    xcb_window_t window;
    xcb_timestamp_t taken;
  };

  bool isConnected();
  void connect();
  void setShape(xcb_window_t window, std::uint8_t kind, const std::vector<WindowPart> &parts);
  xcb_window_t focusedWindow();
  xcb_timestamp_t serverTime();
  void note(const xcb_generic_event_t &event);
  void readEvents();
  void handleEvents();

  xcb_connection_t *const toolkit_;
  const double pixelsPerPoint_;
  const WatchReadable watchReadable_;
  std::optional<X11Connection> connection_;
  std::uint8_t xfixesFirstEvent_ = 0;
  xcb_window_t ownWindow_ = XCB_NONE;  // never mapped; its property changes tell the server's time
  xcb_atom_t compositorSelection_ = XCB_NONE;
  xcb_atom_t frameExtents_ = XCB_ATOM_NONE;
  std::map<NativeWindow, Previous> previous_;
  bool compositorHasChanged_ = false;  // and nobody has been told yet
  Signal<> compositorChanged_;
  Handle watch_;  // of the connection
};

}  // namespace lumiwren
