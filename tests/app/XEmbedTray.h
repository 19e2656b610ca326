#pragma once

#include "app/XScreen.h"

#include <QPoint>
#include <QSocketNotifier>

#include <set>
#include <string>

namespace lumiwren::testing {

/// A tray of the XEmbed kind: a strip at the screen's upper left corner that shows one icon. Its events come
/// with Qt's event loop.
class XEmbedTray {
public:
  /// Where the icon is clicked.
  static constexpr QPoint iconCentre{12, 12};

  explicit XEmbedTray(const std::string &display);

  /// Whether an icon is docked.
  bool hasIcon();
  /// Whether the icon is drawn, too.
  bool showsColour(QRgb colour);
  const XScreen &screen() const { return screen_; }

private:
  void readEvents();
  void dock(xcb_window_t icon);

  XScreen screen_;
  const xcb_atom_t opcode_;
  xcb_window_t window_;
  std::set<xcb_window_t> icons_;
  QSocketNotifier readable_;
};

}  // namespace lumiwren::testing
