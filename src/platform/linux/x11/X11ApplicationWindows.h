#pragma once

#include "platform/ApplicationWindows.h"
#include "platform/linux/x11/X11Connection.h"

#include <xcb/xcb.h>

#include <initializer_list>
#include <string_view>

namespace lumiwren {

/// Asks the window manager, in the way of pagers and task bars, whose wishes it takes for the user's.
class X11ApplicationWindows : public ApplicationWindows {
public:
  /// The toolkit's connection, on which the windows are shown: so what is asked here comes after that. The
  /// other one is for questions and outlives this object.
  X11ApplicationWindows(xcb_connection_t *toolkit, const X11Connection &questions);

  void activate(NativeWindow window) override;
  void handOverKeyboard(NativeWindow window) override;
  void setFloating(NativeWindow window) override;

private:
  void ask(NativeWindow window, std::string_view message, std::initializer_list<std::uint32_t> data);

  xcb_connection_t *const toolkit_;
  const X11Connection &questions_;
};

}  // namespace lumiwren
