#pragma once

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/capture/CaptureMonitor.h"
#include "platform/linux/x11/capture/PixelRegion.h"

#include <xcb/render.h>

#include <cstdint>
#include <vector>

namespace lumiwren {

/// What is to be known of the display before the overlay can be shown, asked in as few round trips as can be.
class CaptureDisplay {
public:
  /// Sends the questions that can be asked at once. The connection outlives this object.
  explicit CaptureDisplay(const X11Connection &connection);
  /// Waits for the answers. Throws std::runtime_error when the display lacks something that is needed.
  void read(const xcb_screen_t &screen);

  const X11Connection &connection() const { return connection_; }
  /// At least one.
  const std::vector<CaptureMonitor> &monitors() const { return monitors_; }
  /// Whether the monitors are other ones by now. Waits for the server.
  bool isRearranged() const;
  PixelPoint pointer() const { return pointer_; }
  /// Of the screen's own pixels, and of sprites.
  xcb_render_pictformat_t screenFormat() const { return screenFormat_; }
  xcb_render_pictformat_t spriteFormat() const { return spriteFormat_; }
  /// The selection that is owned while a region is being chosen on this screen, and whether one is.
  xcb_atom_t lock() const { return lock_; }
  bool isLocked() const { return locked_; }
  /// Numbers of the extensions' events.
  std::uint8_t layoutEvents() const { return layoutEvents_; }
  std::uint8_t inputEvents() const { return inputEvents_; }
  xcb_atom_t opacity() const { return opacity_; }
  xcb_atom_t bypassCompositor() const { return bypassCompositor_; }

private:
  void readFormats(const xcb_screen_t &screen, const xcb_render_query_pict_formats_reply_t *reply);

  const X11Connection &connection_;
  xcb_intern_atom_cookie_t lockQuestion_, opacityQuestion_, bypassQuestion_;
  PixelRect whole_;
  std::vector<CaptureMonitor> monitors_;
  PixelPoint pointer_;
  xcb_render_pictformat_t screenFormat_ = XCB_NONE;
  xcb_render_pictformat_t spriteFormat_ = XCB_NONE;
  xcb_atom_t lock_ = XCB_ATOM_NONE;
  xcb_atom_t opacity_ = XCB_ATOM_NONE;
  xcb_atom_t bypassCompositor_ = XCB_ATOM_NONE;
  bool locked_ = false;
  std::uint8_t layoutEvents_ = 0;
  std::uint8_t inputEvents_ = 0;
};

}  // namespace lumiwren
