#pragma once

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/capture/PixelFormat.h"
#include "platform/linux/x11/capture/PixelRegion.h"
#include "platform/linux/x11/capture/SharedStrips.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

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
  /// Of the samples that readRows() gives: 8 or 16.
  int bitsPerSample() const { return format_.bitsPerSample(); }
  /// Gives `take` the rows of a part of the picture, from the top: red, green and blue of each pixel. Waits
  /// for the server; throws std::runtime_error when it does not give them.
  using RowReader = std::function<void(std::span<const std::uint8_t> samples)>;
  void readRows(const PixelRect &part, const RowReader &take);

private:
  /// Rows of a part, `mostBytes` at the most; one row at the least.
  std::vector<PixelRect> stripsOf(const PixelRect &part, std::size_t mostBytes) const;
  /// Gives the rows of one strip on, as the server has laid them out.
  void takeStrip(const PixelRect &strip, std::span<const std::uint8_t> data, const RowReader &take) const;
  /// Through memory that is shared with the server. False when there is none.
  bool readShared(const PixelRect &part, const RowReader &take);
  /// Through the connection.
  void readUnshared(const PixelRect &part, const RowReader &take) const;

  const X11Connection &connection_;
  const xcb_screen_t *screen_;
  PixelFormat format_;
  xcb_pixmap_t pixmap_;
  std::optional<SharedStrips> shared_;
};

}  // namespace lumiwren
