#pragma once

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/capture/PixelFormat.h"
#include "platform/linux/x11/capture/PixelRegion.h"

namespace lumiwren {

/// A picture of the whole X screen, of everything that is on it but the pointer. It stays in the server, so
/// that taking and showing it moves no pixels through this program.
class FrozenScreen {
public:
  /// Asks for the picture; the server takes it before it does anything that is asked later on this
  /// connection, which outlives this object. Throws std::runtime_error for a screen whose colours are not
  /// understood.
  explicit FrozenScreen(const X11Connection &connection);
  FrozenScreen(const FrozenScreen &) = delete;
  FrozenScreen &operator=(const FrozenScreen &) = delete;
  ~FrozenScreen();

  const xcb_screen_t &screen() const { return *screen_; }
  PixelRect frame() const { return {0, 0, screen_->width_in_pixels, screen_->height_in_pixels}; }
  xcb_pixmap_t pixmap() const { return pixmap_; }

  /// Paints parts of the picture black: the server keeps anything where no monitor is.
  void blacken(const PixelRegion &region) const;
  /// The pixels of a part of the picture. Waits for the server; throws std::runtime_error when it does not
  /// give them.
  RGBImage pixels(const PixelRect &part) const;

private:
  const X11Connection &connection_;
  const xcb_screen_t *screen_;
  PixelFormat format_;
  xcb_pixmap_t pixmap_;
};

}  // namespace lumiwren
