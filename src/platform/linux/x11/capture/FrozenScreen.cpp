#include "platform/linux/x11/capture/FrozenScreen.h"

#include "platform/linux/x11/capture/Requests.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

namespace lumiwren {
namespace {

const xcb_screen_t *screenOf(const X11Connection &connection) {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
  while (screens.data->root != connection.root()) {
    xcb_screen_next(&screens);
  }
  return screens.data;
}

PixelFormat formatOf(const X11Connection &connection, const xcb_screen_t &screen) {
  const xcb_setup_t *setup = xcb_get_setup(connection.get());
  PixelFormat format;
  format.bitsPerPixel = 0;
  format.mostSignificantByteFirst = setup->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
  for (auto formats = xcb_setup_pixmap_formats_iterator(setup); formats.rem > 0; xcb_format_next(&formats)) {
    if (formats.data->depth == screen.root_depth) {
      format.bitsPerPixel = formats.data->bits_per_pixel;
      format.rowAlignment = formats.data->scanline_pad;
    }
  }
  for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
    for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
         xcb_visualtype_next(&visuals)) {
      if (visuals.data->visual_id == screen.root_visual) {
        const bool trueColor = visuals.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR;
        format.redMask = trueColor ? visuals.data->red_mask : 0;
        format.greenMask = visuals.data->green_mask;
        format.blueMask = visuals.data->blue_mask;
      }
    }
  }
  return format;
}

constexpr std::uint32_t allPlanes = std::numeric_limits<std::uint32_t>::max();

}  // namespace

FrozenScreen::FrozenScreen(const X11Connection &connection)
    : connection_(connection),
      screen_(screenOf(connection)),
      format_(formatOf(connection, *screen_)),
      pixmap_(xcb_generate_id(connection.get())) {
  if (!format_.isSupported()) {
    throw std::runtime_error("the screen has colours of a kind that is not understood");
  }
  xcb_connection_t *server = connection.get();
  xcb_create_pixmap(server, screen_->root_depth, pixmap_, connection.root(), screen_->width_in_pixels,
                    screen_->height_in_pixels);
  const xcb_gcontext_t context = xcb_generate_id(server);
  const std::uint32_t values[]{XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
  xcb_create_gc(server, context, pixmap_, XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES, values);
  xcb_copy_area(server, connection.root(), pixmap_, context, 0, 0, 0, 0, screen_->width_in_pixels,
                screen_->height_in_pixels);
  xcb_free_gc(server, context);
  xcb_flush(server);
  // While the server is copying.
  shared_.emplace(connection, format_.bytesPerRow(screen_->width_in_pixels));
}

FrozenScreen::~FrozenScreen() {
  xcb_free_pixmap(connection_.get(), pixmap_);
}

void FrozenScreen::blacken(const PixelRegion &region) const {
  if (region.empty()) {
    return;
  }
  xcb_connection_t *server = connection_.get();
  const xcb_gcontext_t context = xcb_generate_id(server);
  const std::uint32_t black = screen_->black_pixel;
  xcb_create_gc(server, context, pixmap_, XCB_GC_FOREGROUND, &black);
  const auto rectangles = serverRectangles(region);
  xcb_poly_fill_rectangle(server, pixmap_, context, static_cast<std::uint32_t>(rectangles.size()),
                          rectangles.data());
  xcb_free_gc(server, context);
}

void FrozenScreen::takeStrip(const PixelRect &strip, std::span<const std::uint8_t> data,
                             const RowReader &take) const {
  const std::size_t rowSize = format_.bytesPerRow(strip.width);
  if (data.size() < rowSize * static_cast<std::size_t>(strip.height)) {
    throw std::runtime_error("the display does not give its pixels");
  }
  std::vector<std::uint8_t> samples(format_.samplesPerRow(strip.width));
  for (int row = 0; row < strip.height; ++row) {
    format_.rgbRow(data.subspan(static_cast<std::size_t>(row) * rowSize, rowSize), samples);
    take(samples);
  }
}

void FrozenScreen::readRows(const PixelRect &part, const RowReader &take) {
  if (!readShared(part, take)) {
    readUnshared(part, take);
  }
}

std::vector<PixelRect> FrozenScreen::stripsOf(const PixelRect &part, std::size_t mostBytes) const {
  const int height =
      std::clamp(static_cast<int>(mostBytes / format_.bytesPerRow(part.width)), 1, part.height);
  std::vector<PixelRect> strips;
  for (int y = 0; y < part.height; y += height) {
    strips.push_back({part.x, part.y + y, part.width, std::min(height, part.height - y)});
  }
  return strips;
}

bool FrozenScreen::readShared(const PixelRect &part, const RowReader &take) {
  if (!shared_->isPossible()) {
    return false;
  }
  const auto strips = stripsOf(part, shared_->stripBytes());
  std::size_t asked = 0;
  for (std::size_t index = 0; index < strips.size(); ++index) {
    // The server fills the other strips while one is read.
    for (; asked < std::min(index + SharedStrips::count, strips.size()); ++asked) {
      shared_->ask(pixmap_, strips[asked], asked);
    }
    const auto pixels = shared_->wait(index);
    if (!pixels && index == 0) {
      return false;
    }
    takeStrip(strips[index], pixels.value_or(std::span<const std::uint8_t>()), take);
  }
  return true;
}

void FrozenScreen::readUnshared(const PixelRect &part, const RowReader &take) const {
  xcb_connection_t *server = connection_.get();
  constexpr std::size_t bytesAtOnce = std::size_t{1} << 20U;  // the connection may be a slow one
  for (const PixelRect &strip : stripsOf(part, bytesAtOnce)) {
    const auto rect = serverRectangle(strip);
    const XReply<xcb_get_image_reply_t> reply(
        xcb_get_image_reply(server,
                            xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap_, rect.x, rect.y,
                                          rect.width, rect.height, allPlanes),
                            nullptr));
    const auto length = reply ? static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) : 0;
    takeStrip(strip, {reply ? xcb_get_image_data(reply.get()) : nullptr, length}, take);
  }
}

}  // namespace lumiwren
