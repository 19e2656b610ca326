#include "platform/linux/x11/capture/FrozenScreen.h"

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/x11/capture/Requests.h"

#include <xcb/shm.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <limits>
#include <new>
#include <optional>
#include <stdexcept>

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

/// Memory that this process and the server share. It has no name, so nothing is left of it in any case.
class SharedMemory {
public:
  explicit SharedMemory(std::size_t size) : size_(size), file_(memfd_create("screen", MFD_CLOEXEC)) {
    if (!file_ || ftruncate(file_.get(), static_cast<off_t>(size)) != 0) {
      throw std::bad_alloc();
    }
    // All pages at once: the server would otherwise stop at each of them.
    memory_ = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, file_.get(), 0);
    if (memory_ == MAP_FAILED) {
      throw std::bad_alloc();
    }
  }
  SharedMemory(const SharedMemory &) = delete;
  SharedMemory &operator=(const SharedMemory &) = delete;
  ~SharedMemory() { munmap(memory_, size_); }

  std::span<const std::uint8_t> bytes() const { return {static_cast<const std::uint8_t *>(memory_), size_}; }
  /// A descriptor to give away.
  int duplicate() const { return fcntl(file_.get(), F_DUPFD_CLOEXEC, 0); }

private:
  std::size_t size_;
  FileDescriptor file_;
  void *memory_;
};

/// Whether the server is on this machine and takes descriptors.
bool sharesMemory(xcb_connection_t *connection) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (getsockname(xcb_get_file_descriptor(connection), reinterpret_cast<sockaddr *>(&address), &length) !=
          0 ||
      address.ss_family != AF_UNIX) {
    return false;
  }
  const auto *extension = xcb_get_extension_data(connection, &xcb_shm_id);
  if (extension == nullptr || extension->present == 0) {
    return false;
  }
  const XReply<xcb_shm_query_version_reply_t> version(
      xcb_shm_query_version_reply(connection, xcb_shm_query_version(connection), nullptr));
  return version &&
         (version->major_version > 1 || (version->major_version == 1 && version->minor_version >= 2));
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

RGBImage FrozenScreen::pixels(const PixelRect &part) const {
  xcb_connection_t *server = connection_.get();
  const auto x = static_cast<std::int16_t>(part.x);
  const auto y = static_cast<std::int16_t>(part.y);
  const auto width = static_cast<std::uint16_t>(part.width);
  const auto height = static_cast<std::uint16_t>(part.height);
  const std::size_t size = format_.bytesPerRow(part.width) * height;
  if (sharesMemory(server)) {
    const SharedMemory memory(size);
    const xcb_shm_seg_t segment = xcb_generate_id(server);
    xcb_shm_attach_fd(server, segment, memory.duplicate(), 0);
    const XReply<xcb_shm_get_image_reply_t> reply(
        xcb_shm_get_image_reply(server,
                                xcb_shm_get_image(server, pixmap_, x, y, width, height, allPlanes,
                                                  XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0),
                                nullptr));
    xcb_shm_detach(server, segment);
    if (reply) {
      return rgbImage(memory.bytes(), part.width, part.height, format_);
    }
  }
  const XReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(
      server, xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap_, x, y, width, height, allPlanes),
      nullptr));
  if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < size) {
    throw std::runtime_error("the display does not give its pixels");
  }
  return rgbImage({xcb_get_image_data(reply.get()), size}, part.width, part.height, format_);
}

}  // namespace lumiwren
