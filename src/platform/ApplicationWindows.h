#pragma once

#include "platform/PanelWindows.h"

namespace lumiwren {

/// What the program asks of the session for its ordinary windows, those that the window manager manages. Main
/// thread; nothing here waits for another program than the display server.
class ApplicationWindows {
public:
  virtual ~ApplicationWindows() = default;

  /// Brings a shown window to the front and gives it the keyboard, whatever program the user is in.
  virtual void activate(NativeWindow window) = 0;
  /// Gives the keyboard, which a window of the program has, to another shown one at once. For the moment
  /// before the first one goes: what has the keyboard next would else be decided by others.
  virtual void handOverKeyboard(NativeWindow window) = 0;
  /// Keeps a shown window above ordinary ones, on every desktop.
  virtual void setFloating(NativeWindow window) = 0;
};

}  // namespace lumiwren
