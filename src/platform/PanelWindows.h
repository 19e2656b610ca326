#pragma once

#include "platform/Geometry.h"

#include <cstdint>

namespace lumiwren {

/// What the toolkit calls a window's native identifier.
using NativeWindow = std::uint64_t;

/// What the floating panel asks of the session, for windows of this program that the window manager does not
/// manage: those are above everything, on every desktop, and nobody but this program gives them the keyboard.
/// Main thread; nothing here waits for another program than the display server.
class PanelWindows {
public:
  virtual ~PanelWindows() = default;

  /// Whether what is translucent in a window lets what is below it shine through, at this moment.
  virtual bool isTranslucencySupported() = 0;
  /// Gives the mapped window the keyboard focus.
  virtual void makeKey(NativeWindow window) = 0;
  /// Gives the focus back to the window that had it before makeKey(), unless somebody has moved it since.
  /// Before the window is unmapped; does nothing for a window that was never made key.
  virtual void resignKey(NativeWindow window) = 0;
  /// Where the window really is, in desktop coordinates; empty (no size) when there is no such window.
  virtual Rect frame(NativeWindow window) = 0;
};

}  // namespace lumiwren
