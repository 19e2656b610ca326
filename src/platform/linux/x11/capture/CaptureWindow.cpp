#include "platform/linux/x11/capture/CaptureWindow.h"

#include "platform/linux/x11/capture/Requests.h"

#include <xcb/xcbext.h>

#include <bit>
#include <iterator>

namespace lumiwren {
namespace {

constexpr std::uint32_t dim = 0x73000000;  // 45 % black: white lines stand out on a dimmed white page, too
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
      canvas_(xcb_generate_id(server_)),
      canvasPicture_(xcb_generate_id(server_)),
      context_(xcb_generate_id(server_)),
      cursor_(xcb_generate_id(server_)) {
  const xcb_screen_t &screen = frozen_.screen();
  xcb_create_pixmap(server_, screen.root_depth, canvas_, screen.root, screen.width_in_pixels,
                    screen.height_in_pixels);
  xcb_render_create_picture(server_, canvasPicture_, canvas_, display_.screenFormat(), 0, nullptr);
  const std::uint32_t noExposures = 0;
  xcb_create_gc(server_, context_, canvas_, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);

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
  xcb_render_free_picture(server_, canvasPicture_);
  xcb_free_pixmap(server_, canvas_);
}

void CaptureWindow::show(const CaptureScene &scene) {
  scene_ = scene;
  const PixelRegion everything{frozen_.frame()};
  paint(everything);
  const std::uint32_t above = XCB_STACK_MODE_ABOVE;
  xcb_configure_window(server_, window_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
  xcb_map_window(server_, window_);
  copyToWindow(everything);
  xcb_flush(server_);
}

void CaptureWindow::draw(const CaptureScene &scene) {
  const PixelRegion region = clipped(changed(scene_, scene), frozen_.frame());
  scene_ = scene;
  if (region.empty()) {
    return;
  }
  paint(region);
  copyToWindow(region);
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
      copyToWindow({{exposed.x, exposed.y, exposed.width, exposed.height}});
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

void CaptureWindow::paint(const PixelRegion &region) {
  for (const PixelRect &part : region) {
    const auto rect = serverRectangle(part);
    xcb_copy_area(server_, frozen_.pixmap(), canvas_, context_, rect.x, rect.y, rect.x, rect.y, rect.width,
                  rect.height);
  }
  const auto clip = serverRectangles(region);
  xcb_render_set_picture_clip_rectangles(server_, canvasPicture_, 0, 0,
                                         static_cast<std::uint32_t>(clip.size()), clip.data());
  const auto fill = [&](std::uint32_t color, const PixelRegion &where) {
    const auto rectangles = serverRectangles(where);
    if (!rectangles.empty()) {
      xcb_render_fill_rectangles(server_, XCB_RENDER_PICT_OP_OVER, canvasPicture_, renderColor(color),
                                 static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
    }
  };
  fill(dim, subtracted(region, scene_.bright));
  for (const auto &element : scene_.fills) {
    fill(element.color, clipped({element.rect}, frozen_.frame()));
  }
  for (const auto &sprite : scene_.sprites) {
    if (!clipped(region, sprite.rect()).empty()) {
      paintSprite(sprite);
    }
  }
}

void CaptureWindow::paintSprite(const CaptureScene::PlacedSprite &sprite) const {
  const xcb_render_picture_t source = picture(*sprite.sprite);
  xcb_render_composite(server_, XCB_RENDER_PICT_OP_OVER, source, XCB_NONE, canvasPicture_, 0, 0, 0, 0,
                       static_cast<std::int16_t>(sprite.place.x), static_cast<std::int16_t>(sprite.place.y),
                       static_cast<std::uint16_t>(sprite.sprite->width),
                       static_cast<std::uint16_t>(sprite.sprite->height));
  xcb_render_free_picture(server_, source);
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

void CaptureWindow::copyToWindow(const PixelRegion &region) const {
  for (const PixelRect &part : region) {
    const auto rect = serverRectangle(part);
    xcb_copy_area(server_, canvas_, window_, context_, rect.x, rect.y, rect.x, rect.y, rect.width,
                  rect.height);
  }
}

}  // namespace lumiwren
