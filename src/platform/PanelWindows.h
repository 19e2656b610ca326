#pragma once

#include "base/Handle.h"
#include "platform/Geometry.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace lumiwren {

/// What the toolkit calls a window's native identifier.
using NativeWindow = std::uint64_t;

/// A part of a window, in the display server's pixels from the window's upper left corner, y down.
struct WindowPart {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  friend bool operator==(const WindowPart &, const WindowPart &) = default;
};

/// What of its rectangle a window is for those who see and click it. A window is born as all of it.
struct WindowForm {
  /// How far a shadow that the window draws itself reaches inwards from its edges, in pixels.
  struct Shadow {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    friend bool operator==(const Shadow &, const Shadow &) = default;
  };

  /// The rest is cut off; all of the window when empty.
  std::vector<WindowPart> visible;
  /// Clicks on the rest go to what lies below; all that is visible when empty.
  std::vector<WindowPart> clickable;
  Shadow shadow;
  friend bool operator==(const WindowForm &, const WindowForm &) = default;
};

/// A window of that size, in pixels, that draws a shadow of that breadth around what it shows. Clicks on the
/// shadow go to what is below, but for `grip` pixels next to what is shown.
inline WindowForm shadowedForm(int width, int height, const WindowForm::Shadow &shadow, int grip) {
  return {.visible = {},
          .clickable = {{shadow.left - grip, shadow.top - grip, width - shadow.left - shadow.right + 2 * grip,
                         height - shadow.top - shadow.bottom + 2 * grip}},
          .shadow = shadow};
}

/// What the floating panel asks of the session, for windows of this program that the window manager does not
/// manage: those are above everything, on every desktop, and nobody but this program gives them the keyboard.
/// Main thread; nothing here waits for another program than the display server.
class PanelWindows {
public:
  virtual ~PanelWindows() = default;

  /// Whether what is translucent in a window lets what is below it shine through, at this moment.
  virtual bool isTranslucencySupported() = 0;
  /// Tells of every change of that, for as long as the handle is held.
  virtual Handle observeTranslucency(std::function<void()> changed) = 0;
  /// Cuts the window, on the screen or not, to a form.
  virtual void setForm(NativeWindow window, const WindowForm &form) = 0;
  /// Gives the mapped window the keyboard focus.
  virtual void makeKey(NativeWindow window) = 0;
  /// Gives the focus back to the window that had it before makeKey(), unless somebody has moved it since.
  /// Before the window is unmapped; does nothing for a window that was never made key.
  virtual void resignKey(NativeWindow window) = 0;
  /// Where the window really is, in desktop coordinates; empty (no size) when there is no such window.
  virtual Rect frame(NativeWindow window) = 0;
};

}  // namespace lumiwren
