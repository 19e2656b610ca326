#pragma once

#include "platform/Screens.h"
#include "platform/linux/x11/MonitorLayout.h"
#include "platform/linux/x11/X11Connection.h"

#include <optional>
#include <vector>

namespace lumiwren {

/// Monitors, pointer and focus as the X server has them at the moment of the question.
class X11Screens : public Screens {
public:
  /// The connection outlives this object.
  X11Screens(const X11Connection &connection, double pixelsPerPoint);

  Point mouseLocation() override;
  std::optional<Rect> mainScreenVisibleFrame() override;

  /// As a connection's server has it; nothing without a server. Waits for the server's answer.
  static std::optional<MonitorLayout> layout(const X11Connection &connection);

private:
  struct StrutQuestion {
    xcb_get_property_cookie_t partial, plain;
  };

  /// The window below the root that holds the focused one.
  std::optional<PixelRect> topWindow(xcb_window_t focus) const;
  std::vector<StrutQuestion> askForStruts(const std::vector<xcb_window_t> &clients) const;
  std::vector<Strut> struts(const std::vector<StrutQuestion> &questions) const;
  /// The work area of a desktop, of those of all desktops.
  static std::optional<PixelRect> workArea(const std::vector<std::uint32_t> &areas,
                                           const std::vector<std::uint32_t> &desktop);

  const X11Connection &connection_;
  const double pixelsPerPoint_;
  struct {
    xcb_atom_t clientList, strut, strutPartial, workArea, currentDesktop;
  } atoms_{};
};

}  // namespace lumiwren
