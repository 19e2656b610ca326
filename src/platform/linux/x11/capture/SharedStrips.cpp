#include "platform/linux/x11/capture/SharedStrips.h"

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/x11/capture/Requests.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <algorithm>

namespace lumiwren {
namespace {

// Fresh pages of a strip against the time that asking for it takes: regions of large screens are larger, too.
constexpr std::size_t leastStripBytes = std::size_t{64} << 10U;
constexpr std::size_t leastStripRows = 8;

/// Whether the server can be on this machine and take descriptors.
bool canShareMemory(xcb_connection_t *server) {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (getsockname(xcb_get_file_descriptor(server), reinterpret_cast<sockaddr *>(&address), &length) != 0 ||
      address.ss_family != AF_UNIX) {
    return false;
  }
  const auto *extension = xcb_get_extension_data(server, &xcb_shm_id);
  return extension != nullptr && extension->present != 0;
}

}  // namespace

SharedStrips::SharedStrips(const X11Connection &connection, std::size_t rowBytes)
    : server_(connection.get()), stripBytes_(std::max(leastStripBytes, leastStripRows * rowBytes)) {
  if (!canShareMemory(server_)) {
    return;
  }
  const std::size_t size = count * stripBytes_;
  const FileDescriptor file(memfd_create("screen", MFD_CLOEXEC));
  if (!file || ftruncate(file.get(), static_cast<off_t>(size)) != 0) {
    return;
  }
  void *memory = mmap(nullptr, size, PROT_READ, MAP_SHARED | MAP_POPULATE, file.get(), 0);
  if (memory == MAP_FAILED) {
    return;
  }
  memory_ = static_cast<std::uint8_t *>(memory);
  segment_ = xcb_generate_id(server_);
  // A server that refuses it, or never gets it, gives no strip; the error itself says nothing more.
  xcb_discard_reply(
      server_,
      xcb_shm_attach_fd_checked(server_, segment_, fcntl(file.get(), F_DUPFD_CLOEXEC, 0), 0).sequence);
}

SharedStrips::~SharedStrips() {
  if (memory_ != nullptr) {
    xcb_discard_reply(server_, xcb_shm_detach_checked(server_, segment_).sequence);
    munmap(memory_, count * stripBytes_);
  }
}

void SharedStrips::ask(xcb_drawable_t from, const PixelRect &part, std::size_t index) {
  const auto place = serverRectangle(part);
  const std::size_t strip = index % count;
  questions_.at(strip) =
      xcb_shm_get_image(server_, from, place.x, place.y, place.width, place.height, ~0U,
                        XCB_IMAGE_FORMAT_Z_PIXMAP, segment_, static_cast<std::uint32_t>(strip * stripBytes_));
  xcb_flush(server_);
}

std::optional<std::span<const std::uint8_t>> SharedStrips::wait(std::size_t index) {
  const std::size_t strip = index % count;
  const XReply<xcb_shm_get_image_reply_t> reply(
      xcb_shm_get_image_reply(server_, questions_.at(strip), nullptr));
  if (!reply || reply->size > stripBytes_) {
    return std::nullopt;
  }
  return std::span<const std::uint8_t>(memory_ + strip * stripBytes_, reply->size);
}

}  // namespace lumiwren
