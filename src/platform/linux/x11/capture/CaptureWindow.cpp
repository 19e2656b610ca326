#include "platform/linux/x11/capture/CaptureWindow.h"

#include "platform/linux/x11/capture/Requests.h"

#include <xcb/xcbext.h>

#include <algorithm>
#include <bit>

namespace lumiwren {
namespace {

constexpr std::uint32_t dim = 0x73000000;  // 45 % black: white lines stand out on a dimmed white page, too
// Rows of a tile: few enough to stay in the processor's cache.
constexpr int tileHeight = 128;
// Two windows that both want to be above the other one would otherwise go on for ever.
constexpr int mostRaises = 40;

xcb_render_color_t renderColor(std::uint32_t premultiplied) {
  const auto channel = [premultiplied](unsigned shift) {
    return static_cast<std::uint16_t>((premultiplied >> shift & 0xffU) * 0x101U);
  };
  return {channel(16), channel(8), channel(0), channel(24)};
}

template <typename Event>
const Event &as(const xcb_generic_event_t &event) {
  return reinterpret_cast<const Event &>(event);
}

}  // namespace

CaptureWindow::CaptureWindow(const CaptureDisplay &display, const FrozenScreen &picture, const Sprite &cursor)
    : display_(display),
      frozen_(picture),
      server_(display.connection().get()),
      window_(xcb_generate_id(server_)),
      tile_(xcb_generate_id(server_)),
      tilePicture_(xcb_generate_id(server_)),
      context_(xcb_generate_id(server_)),
      cursor_(xcb_generate_id(server_)) {
  const xcb_screen_t &screen = frozen_.screen();
  xcb_create_pixmap(server_, screen.root_depth, tile_, screen.root, screen.width_in_pixels, tileHeight);
  xcb_render_create_picture(server_, tilePicture_, tile_, display_.screenFormat(), 0, nullptr);
  const std::uint32_t noExposures = 0;
  xcb_create_gc(server_, context_, tile_, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);

  const xcb_render_picture_t shape = this->picture(cursor);
  xcb_render_create_cursor(server_, cursor_, shape, static_cast<std::uint16_t>(cursor.width / 2),
                           static_cast<std::uint16_t>(cursor.height / 2));
  xcb_render_free_picture(server_, shape);

  // Without a background the server paints nothing before the first picture: so nothing flashes.
  const std::uint32_t values[]{XCB_BACK_PIXMAP_NONE, 1,
                               XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_VISIBILITY_CHANGE, cursor_};
  xcb_create_window(server_, XCB_COPY_FROM_PARENT, window_, screen.root, 0, 0, screen.width_in_pixels,
                    screen.height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_CURSOR,
                    values);
  // Some compositors make windows without the focus translucent, and switch off (2: do not) for one that
  // covers everything, which is seen as a flash.
  const std::uint32_t opaque = 0xffffffff;
  const std::uint32_t keepCompositor = 2;
  xcb_change_property(server_, XCB_PROP_MODE_REPLACE, window_, display_.opacity(), XCB_ATOM_CARDINAL, 32, 1,
                      &opaque);
  xcb_change_property(server_, XCB_PROP_MODE_REPLACE, window_, display_.bypassCompositor(), XCB_ATOM_CARDINAL,
                      32, 1, &keepCompositor);
  constexpr char windowClass[] = "lumiwren-screencapture\0Lumiwren";
  xcb_change_property(server_, XCB_PROP_MODE_REPLACE, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                      sizeof windowClass, windowClass);
  // Under a compositor no window is ever obscured as far as the server tells, so the others are watched.
  const std::uint32_t rootEvents = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(server_, screen.root, XCB_CW_EVENT_MASK, &rootEvents);
}

CaptureWindow::~CaptureWindow() {
  xcb_destroy_window(server_, window_);
  xcb_free_cursor(server_, cursor_);
  xcb_free_gc(server_, context_);
  xcb_render_free_picture(server_, tilePicture_);
  xcb_free_pixmap(server_, tile_);
}

void CaptureWindow::show(const CaptureScene &scene) {
  scene_ = scene;
  const std::uint32_t above = XCB_STACK_MODE_ABOVE;
  xcb_configure_window(server_, window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
  xcb_map_window(server_, window_);
  paint({frozen_.frame()});
  xcb_flush(server_);
}

void CaptureWindow::draw(const CaptureScene &scene) {
  const PixelRegion region = clipped(changed(scene_, scene), frozen_.frame());
  scene_ = scene;
  if (region.empty()) {
    return;
  }
  paint(region);
  drawing_ = xcb_get_input_focus(server_).sequence;
  xcb_flush(server_);
}

bool CaptureWindow::isReady() {
  if (drawing_ == 0) {
    return true;
  }
  void *reply = nullptr;
  xcb_generic_error_t *error = nullptr;
  if (xcb_poll_for_reply(server_, drawing_, &reply, &error) == 0) {
    return false;
  }
  const XReply<void> done(reply);
  const XReply<xcb_generic_error_t> failed(error);
  drawing_ = 0;
  return true;
}

void CaptureWindow::hide() {
  xcb_unmap_window(server_, window_);
  xcb_flush(server_);
}

void CaptureWindow::handle(const xcb_generic_event_t &event) {
  switch (event.response_type & 0x7f) {
    case XCB_EXPOSE: {
      const auto &exposed = as<xcb_expose_event_t>(event);
      paint({{exposed.x, exposed.y, exposed.width, exposed.height}});
      xcb_flush(server_);
      break;
    }
    case XCB_VISIBILITY_NOTIFY:
      if (as<xcb_visibility_notify_event_t>(event).state != XCB_VISIBILITY_UNOBSCURED) {
        raise();
      }
      break;
    case XCB_MAP_NOTIFY:
      if (as<xcb_map_notify_event_t>(event).window != window_) {
        raise();
      }
      break;
    case XCB_CONFIGURE_NOTIFY:
      if (as<xcb_configure_notify_event_t>(event).above_sibling == window_) {
        raise();
      }
      break;
    default:
      break;
  }
}

void CaptureWindow::raise() {
  if (raises_ >= mostRaises) {
    return;
  }
  ++raises_;
  const std::uint32_t above = XCB_STACK_MODE_ABOVE;
  xcb_configure_window(server_, window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
  xcb_flush(server_);
}

void CaptureWindow::paint(const PixelRegion &region) const {
  std::vector<Uploaded> sprites;
  for (const auto &sprite : scene_.sprites) {
    if (!clipped(region, sprite.rect()).empty()) {
      sprites.push_back({sprite.rect(), picture(*sprite.sprite)});
    }
  }
  for (const PixelRect &part : region) {
    const int bottom = part.y + part.height;
    for (int top = part.y; top < bottom; top += tileHeight) {
      paintTile({part.x, top, part.width, std::min(tileHeight, bottom - top)}, sprites);
    }
  }
  for (const Uploaded &sprite : sprites) {
    xcb_render_free_picture(server_, sprite.picture);
  }
}

void CaptureWindow::paintTile(const PixelRect &tile, const std::vector<Uploaded> &sprites) const {
  const auto place = serverRectangle(tile);
  xcb_copy_area(server_, frozen_.pixmap(), tile_, context_, place.x, place.y, 0, 0, place.width,
                place.height);
  const auto fill = [&](std::uint32_t color, const PixelRegion &where) {
    auto rectangles = serverRectangles(where);
    for (auto &rectangle : rectangles) {
      rectangle.x = static_cast<std::int16_t>(rectangle.x - place.x);
      rectangle.y = static_cast<std::int16_t>(rectangle.y - place.y);
    }
    if (!rectangles.empty()) {
      xcb_render_fill_rectangles(server_, XCB_RENDER_PICT_OP_OVER, tilePicture_, renderColor(color),
                                 static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
    }
  };
  fill(dim, subtracted({tile}, scene_.bright));
  for (const auto &element : scene_.fills) {
    fill(element.color, clipped({element.rect}, tile));
  }
  for (const Uploaded &sprite : sprites) {
    const PixelRect part = intersection(sprite.rect, tile);
    if (!isEmpty(part)) {
      const auto rectangle = serverRectangle(part);
      xcb_render_composite(server_, XCB_RENDER_PICT_OP_OVER, sprite.picture, XCB_NONE, tilePicture_,
                           static_cast<std::int16_t>(part.x - sprite.rect.x),
                           static_cast<std::int16_t>(part.y - sprite.rect.y), 0, 0,
                           static_cast<std::int16_t>(part.x - tile.x),
                           static_cast<std::int16_t>(part.y - tile.y), rectangle.width, rectangle.height);
    }
  }
  xcb_copy_area(server_, tile_, window_, context_, 0, 0, place.x, place.y, place.width, place.height);
}

xcb_render_picture_t CaptureWindow::picture(const Sprite &sprite) const {
  constexpr std::uint8_t depth = 32;
  const auto width = static_cast<std::uint16_t>(sprite.width);
  const auto height = static_cast<std::uint16_t>(sprite.height);
  const xcb_pixmap_t pixmap = xcb_generate_id(server_);
  const xcb_gcontext_t context = xcb_generate_id(server_);
  const xcb_render_picture_t picture = xcb_generate_id(server_);
  const bool serverIsBigEndian = xcb_get_setup(server_)->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
  auto pixels = sprite.pixels;
  if (serverIsBigEndian != (std::endian::native == std::endian::big)) {
    for (auto &pixel : pixels) {
      pixel = __builtin_bswap32(pixel);
    }
  }
  xcb_create_pixmap(server_, depth, pixmap, frozen_.screen().root, width, height);
  xcb_create_gc(server_, context, pixmap, 0, nullptr);
  xcb_put_image(server_, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width, height, 0, 0, 0, depth,
                static_cast<std::uint32_t>(pixels.size() * sizeof pixels[0]),
                reinterpret_cast<const std::uint8_t *>(pixels.data()));
  xcb_render_create_picture(server_, picture, pixmap, display_.spriteFormat(), 0, nullptr);
  // The picture keeps what it shows.
  xcb_free_gc(server_, context);
  xcb_free_pixmap(server_, pixmap);
  return picture;
}

}  // namespace lumiwren
