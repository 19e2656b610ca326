#include "platform/linux/x11/selection/PasteboardParcel.h"

#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace lumiwren {

namespace {

// Both ends are of one build and on one machine, so numbers travel as they are in memory.
void appendNumber(Bytes &buffer, std::uint64_t number) {
  std::array<std::uint8_t, sizeof number> bytes{};
  std::memcpy(bytes.data(), &number, sizeof number);
  buffer.insert(buffer.end(), bytes.begin(), bytes.end());
}

void appendText(Bytes &buffer, std::string_view text) {
  appendNumber(buffer, text.size());
  buffer.insert(buffer.end(), text.begin(), text.end());
}

class Input {
public:
  explicit Input(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  bool atEnd() const { return rest_.empty(); }
  std::span<const std::uint8_t> take(std::uint64_t size) {
    if (size > rest_.size()) {
      throw std::runtime_error("a broken parcel");
    }
    const auto taken = rest_.first(static_cast<std::size_t>(size));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  std::uint64_t number() {
    std::uint64_t number = 0;
    std::memcpy(&number, take(sizeof number).data(), sizeof number);
    return number;
  }
  std::string text() {
    const auto bytes = take(number());
    return {bytes.begin(), bytes.end()};
  }

private:
  std::span<const std::uint8_t> rest_;
};

[[noreturn]] void fail(const char *what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void writeAll(int file, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const auto count = write(file, bytes.data(), bytes.size());
    if (count < 0) {
      fail("memfd");
    }
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

}  // namespace

FileDescriptor packParcel(const PasteboardContents &contents) {
  FileDescriptor parcel(memfd_create("pasteboard", MFD_CLOEXEC));
  if (!parcel) {
    fail("memfd_create");
  }
  Bytes header;
  for (const auto &item : contents) {
    header.clear();
    appendText(header, item.type);
    appendText(header, item.encoding);
    appendNumber(header, item.unit);
    appendNumber(header, item.bytes.size());
    writeAll(parcel.get(), header);
    writeAll(parcel.get(), item.bytes);
  }
  return parcel;
}

PasteboardContents unpackParcel(const FileDescriptor &parcel) {
  struct stat status {};
  if (fstat(parcel.get(), &status) != 0) {
    fail("fstat");
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size == 0) {
    return {};
  }
  void *const memory = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, parcel.get(), 0);
  if (memory == MAP_FAILED) {
    fail("mmap");
  }
  const auto unmap = [size](void *begin) { munmap(begin, size); };
  const std::unique_ptr<void, decltype(unmap)> mapping(memory, unmap);

  PasteboardContents contents;
  Input input({static_cast<const std::uint8_t *>(memory), size});
  while (!input.atEnd()) {
    auto &item = contents.emplace_back();
    item.type = input.text();
    item.encoding = input.text();
    item.unit = static_cast<std::uint8_t>(input.number());
    const auto bytes = input.take(input.number());
    item.bytes.assign(bytes.begin(), bytes.end());
  }
  return contents;
}

ParcelSockets makeParcelSockets() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    fail("socketpair");
  }
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

bool sendMessage(const FileDescriptor &socket, std::uint64_t number, const FileDescriptor &parcel) {
  iovec data{&number, sizeof number};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr message{};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  if (parcel) {
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    auto *const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int file = parcel.get();
    std::memcpy(CMSG_DATA(header), &file, sizeof file);
  }
  return sendmsg(socket.get(), &message, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(sizeof number);
}

std::optional<ParcelMessage> receiveMessage(const FileDescriptor &socket) {
  ParcelMessage result;
  iovec data{&result.number, sizeof result.number};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
  msghdr message{};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  if (recvmsg(socket.get(), &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC) !=
      static_cast<ssize_t>(sizeof result.number)) {
    return std::nullopt;
  }
  if (const auto *const header = CMSG_FIRSTHDR(&message);
      header != nullptr && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
    int file = -1;
    std::memcpy(&file, CMSG_DATA(header), sizeof file);
    result.parcel = FileDescriptor(file);
  }
  return result;
}

}  // namespace lumiwren
