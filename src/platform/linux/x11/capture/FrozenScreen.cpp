#include "platform/linux/x11/capture/FrozenScreen.h"

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/x11/capture/Requests.h"

#include <xcb/shm.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>

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
constexpr const char *noPixels = "the display does not give its pixels";
// Bytes that are asked for at once: few enough to stay in the processor's cache.
constexpr std::size_t stripSize = std::size_t{1} << 20U;

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

/// Two halves of memory that this process and the server share. It has no name, so nothing is left of it in
/// any case.
class SharedStrips {
public:
  SharedStrips(xcb_connection_t *server, std::size_t half) : server_(server), half_(half) {
    if (!sharesMemory(server)) {
      return;
    }
    const FileDescriptor file(memfd_create("screen", MFD_CLOEXEC));
    if (!file || ftruncate(file.get(), static_cast<off_t>(2 * half)) != 0) {
      return;
    }
    void *memory = mmap(nullptr, 2 * half, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (memory == MAP_FAILED) {
      return;
    }
    memory_ = static_cast<const std::uint8_t *>(memory);
    segment_ = xcb_generate_id(server);
    const XReply<xcb_generic_error_t> refused(xcb_request_check(
        server, xcb_shm_attach_fd_checked(server, segment_, fcntl(file.get(), F_DUPFD_CLOEXEC, 0), 0)));
    attached_ = refused == nullptr;
  }
  SharedStrips(const SharedStrips &) = delete;
  SharedStrips &operator=(const SharedStrips &) = delete;
  ~SharedStrips() {
    if (attached_) {
      xcb_shm_detach(server_, segment_);
    }
    if (memory_ != nullptr) {
      munmap(const_cast<std::uint8_t *>(memory_), 2 * half_);
    }
  }

  bool isUsable() const { return attached_; }
  std::span<const std::uint8_t> half(std::size_t index) const { return {memory_ + index * half_, half_}; }
  xcb_shm_get_image_cookie_t ask(xcb_drawable_t from, const xcb_rectangle_t &rect, std::size_t index) const {
    return xcb_shm_get_image(server_, from, rect.x, rect.y, rect.width, rect.height, allPlanes,
                             XCB_IMAGE_FORMAT_Z_PIXMAP, segment_, static_cast<std::uint32_t>(index * half_));
  }

private:
  xcb_connection_t *server_;
  std::size_t half_;
  const std::uint8_t *memory_ = nullptr;
  xcb_shm_seg_t segment_ = XCB_NONE;
  bool attached_ = false;
};

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

void FrozenScreen::takeStrip(const PixelRect &strip, std::span<const std::uint8_t> data,
                             const RowReader &take) const {
  const std::size_t rowSize = format_.bytesPerRow(strip.width);
  std::vector<std::uint8_t> samples(format_.samplesPerRow(strip.width));
  for (int row = 0; row < strip.height; ++row) {
    format_.rgbRow(data.subspan(static_cast<std::size_t>(row) * rowSize, rowSize), samples);
    take(samples);
  }
}

void FrozenScreen::readRows(const PixelRect &part, const RowReader &take) const {
  xcb_connection_t *server = connection_.get();
  const std::size_t rowSize = format_.bytesPerRow(part.width);
  const int stripHeight = std::clamp(static_cast<int>(stripSize / rowSize), 1, part.height);
  const std::size_t stripBytes = rowSize * static_cast<std::size_t>(stripHeight);
  std::vector<PixelRect> strips;
  for (int y = 0; y < part.height; y += stripHeight) {
    strips.push_back({part.x, part.y + y, part.width, std::min(stripHeight, part.height - y)});
  }
  const SharedStrips shared(server, stripBytes);
  // The server fills one half of the memory while the other one is read.
  const auto ask = [&](std::size_t index) {
    return shared.ask(pixmap_, serverRectangle(strips[index]), index % 2);
  };
  auto question = shared.isUsable() ? ask(0) : xcb_shm_get_image_cookie_t{};
  for (std::size_t index = 0; index < strips.size(); ++index) {
    if (shared.isUsable()) {
      const XReply<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(server, question, nullptr));
      if (!reply) {
        throw std::runtime_error(noPixels);
      }
      if (index + 1 < strips.size()) {
        question = ask(index + 1);
        xcb_flush(server);
      }
      takeStrip(strips[index], shared.half(index % 2), take);
      continue;
    }
    const auto rect = serverRectangle(strips[index]);
    const XReply<xcb_get_image_reply_t> reply(
        xcb_get_image_reply(server,
                            xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap_, rect.x, rect.y,
                                          rect.width, rect.height, allPlanes),
                            nullptr));
    const auto length = reply ? static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) : 0;
    if (length < rowSize * rect.height) {
      throw std::runtime_error(noPixels);
    }
    takeStrip(strips[index], {xcb_get_image_data(reply.get()), length}, take);
  }
}

}  // namespace lumiwren
