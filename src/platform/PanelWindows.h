#pragma once

#include <cstdint>

#include "platform/Geometry.h"

namespace lumiwren {

/// What the toolkit calls a window's native identifier.
using NativeWindow = std::uint64_t;

/// What a floating panel asks of the window manager. Main thread; nothing here waits for the window manager.
class PanelWindows {
public:
  virtual ~PanelWindows() = default;

  /// Before a window is mapped: above other windows and full-screen ones, no focus on mapping or on a click.
  virtual void prepare(NativeWindow window) = 0;
  /// After it is mapped: on every desktop.
  virtual void joinAllDesktops(NativeWindow window) = 0;
  /// Lets the window accept the keyboard focus from now on, and asks for it.
  virtual void makeKey(NativeWindow window) = 0;
  /// Where the window really is, in desktop coordinates.
  virtual Rect frame(NativeWindow window) = 0;
  virtual void setFrame(NativeWindow window, Rect frame) = 0;
};

}  // namespace lumiwren
