#pragma once

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/capture/PixelRegion.h"

#include <xcb/shm.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace lumiwren {

/// A little memory that this process and the X server share, in which pixels come from the server strip by
/// strip. It is small because fresh pages of shared memory take longer than their pixels, and has no name, so
/// that nothing is left of it in any case.
class SharedStrips {
public:
  /// As many strips may be asked for at once.
  static constexpr std::size_t count = 3;

  /// Makes the memory and sends it to the server, without waiting whether that takes it. A strip has room for
  /// rows of `rowBytes`. The connection outlives this object.
  SharedStrips(const X11Connection &connection, std::size_t rowBytes);
  SharedStrips(const SharedStrips &) = delete;
  SharedStrips &operator=(const SharedStrips &) = delete;
  ~SharedStrips();

  /// False when there cannot be such memory; true when there is, if the server agrees.
  bool isPossible() const { return memory_ != nullptr; }
  std::size_t stripBytes() const { return stripBytes_; }

  /// Asks for a part of a drawable, which the strip `index` (modulo `count`) is to have room for.
  void ask(xcb_drawable_t from, const PixelRect &part, std::size_t index);
  /// What the strip was asked for, as the server lays it out; valid until it is asked for something else.
  /// Waits for the server. Empty when that did not give it.
  std::optional<std::span<const std::uint8_t>> wait(std::size_t index);

private:
  xcb_connection_t *server_;
  std::size_t stripBytes_;
  std::uint8_t *memory_ = nullptr;
  xcb_shm_seg_t segment_ = XCB_NONE;
  std::array<xcb_shm_get_image_cookie_t, count> questions_{};
};

}  // namespace lumiwren
