#include "platform/linux/x11/capture/FrozenScreen.h"

#include "base/Bytes.h"
#include "platform/linux/FileDescriptor.h"
#include "platform/x11/keys/InputDriver.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <thread>

namespace lumiwren::testing {
namespace {

/// A server of one kind, with a window of one colour on it.
class Screen {
public:
  explicit Screen(const std::vector<std::string> &arguments)
      : server_(XServer::Options{.arguments = arguments}) {
    setenv("DISPLAY", server_.display().c_str(), 1);
    window_.emplace(TestWindow::Options{.x = 10, .y = 20, .width = 30, .height = 40});
  }

  const std::string &display() const { return server_.display(); }
  void fillWindow(std::uint32_t pixel) {
    xcb_connection_t *connection = window_->connection().get();
    xcb_change_window_attributes(connection, window_->id(), XCB_CW_BACK_PIXEL, &pixel);
    xcb_clear_area(connection, 0, window_->id(), 0, 0, 0, 0);
    window_->finish();
  }

private:
  XServer server_;
  std::optional<TestWindow> window_;
};

/// Another way to a server, as a tunnel is: all bytes go through it, but no descriptors. For one connection.
class Tunnel {
public:
  explicit Tunnel(const std::string &display) : listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_un server = address(display);
    // Servers that choose a number themselves take a low one.
    int number = 1000;
    sockaddr_un here{};
    do {
      display_ = ":" + std::to_string(++number);
      here = address(display_);
    } while (bind(listener_.get(), reinterpret_cast<const sockaddr *>(&here), sizeof here) != 0 &&
             errno == EADDRINUSE);
    EXPECT_EQ(listen(listener_.get(), 1), 0);
    thread_ = std::thread([this, server] {
      const FileDescriptor client(accept(listener_.get(), nullptr, nullptr));
      const FileDescriptor there(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
      if (client && connect(there.get(), reinterpret_cast<const sockaddr *>(&server), sizeof server) == 0) {
        forward(client.get(), there.get());
      }
    });
  }
  Tunnel(const Tunnel &) = delete;
  Tunnel &operator=(const Tunnel &) = delete;
  /// Its connection has ended.
  ~Tunnel() {
    shutdown(listener_.get(), SHUT_RDWR);
    thread_.join();
    unlink(address(display_).sun_path);
  }

  const std::string &display() const { return display_; }

private:
  static sockaddr_un address(const std::string &display) {
    const std::string path = "/tmp/.X11-unix/X" + display.substr(1);
    sockaddr_un result{};
    result.sun_family = AF_UNIX;
    path.copy(result.sun_path, sizeof result.sun_path - 1);
    return result;
  }
  static void forward(int one, int other) {
    std::array<pollfd, 2> ends{pollfd{one, POLLIN, 0}, pollfd{other, POLLIN, 0}};
    std::array<char, 65536> buffer;
    while (poll(ends.data(), ends.size(), -1) > 0) {
      for (std::size_t end = 0; end < ends.size(); ++end) {
        if (ends.at(end).revents == 0) {
          continue;
        }
        const ssize_t count = read(ends.at(end).fd, buffer.data(), buffer.size());
        if (count <= 0 || send(ends.at(1 - end).fd, buffer.data(), static_cast<std::size_t>(count),
                               MSG_NOSIGNAL) != count) {
          return;
        }
      }
    }
  }

  std::string display_;
  FileDescriptor listener_;
  std::thread thread_;
};

struct Part {
  int width;
  Bytes samples;
  friend bool operator==(const Part &, const Part &) = default;
};

Part read(FrozenScreen &frozen, const PixelRect &rect) {
  Part part{.width = rect.width, .samples = {}};
  int rows = 0;
  frozen.readRows(rect, [&](std::span<const std::uint8_t> row) {
    part.samples.insert(part.samples.end(), row.begin(), row.end());
    ++rows;
  });
  EXPECT_EQ(rows, rect.height);
  return part;
}

void expectPixel(const Part &image, int x, int y, const Bytes &samples) {
  const std::size_t size = samples.size();
  const std::size_t start =
      (static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width) + static_cast<std::size_t>(x)) *
      size;
  ASSERT_LE(start + size, image.samples.size());
  EXPECT_EQ(Bytes(image.samples.begin() + static_cast<std::ptrdiff_t>(start),
                  image.samples.begin() + static_cast<std::ptrdiff_t>(start + size)),
            samples)
      << x << ", " << y;
}

struct Kind {
  const char *name;
  std::vector<std::string> arguments;
  std::uint32_t pixel;
  Bytes samples;
};

class FrozenScreenTest : public ::testing::TestWithParam<Kind> {};

TEST_P(FrozenScreenTest, ShowsWhatWasThereWhenItWasTaken) {
  const Kind &kind = GetParam();
  Screen screen(kind.arguments);
  screen.fillWindow(kind.pixel);
  const X11Connection connection;
  FrozenScreen frozen(connection);
  EXPECT_EQ(frozen.frame(), (PixelRect{0, 0, 1280, 800}));
  const Part before = read(frozen, {5, 15, 40, 50});
  screen.fillWindow(0);
  const Part image = read(frozen, {5, 15, 40, 50});
  EXPECT_EQ(image, before);
  const Bytes black(kind.samples.size());
  expectPixel(image, 4, 5, black);
  expectPixel(image, 5, 4, black);
  expectPixel(image, 5, 5, kind.samples);
  expectPixel(image, 34, 44, kind.samples);
  expectPixel(image, 35, 44, black);
  expectPixel(image, 34, 45, black);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, FrozenScreenTest,
    ::testing::Values(Kind{"Depth24", {}, 0x123456, {0x12, 0x34, 0x56}},
                      Kind{"Depth30", {"-screen", "0", "1280x800x30"}, 0x3ff00000, {255, 255, 0, 0, 0, 0}},
                      Kind{"Depth16", {"-screen", "0", "1280x800x16"}, 0xf800, {255, 0, 0}},
                      Kind{"WithoutSharedMemory", {"-extension", "MIT-SHM"}, 0x123456, {0x12, 0x34, 0x56}}),
    [](const auto &parameter) { return std::string(parameter.param.name); });

TEST(FrozenScreen, AServerThatNeverGetsTheMemoryIsReadThroughTheConnection) {
  Screen screen({});
  screen.fillWindow(0x123456);
  const Tunnel tunnel(screen.display());
  setenv("DISPLAY", tunnel.display().c_str(), 1);
  const X11Connection connection;
  ASSERT_TRUE(connection.isUsable());
  FrozenScreen frozen(connection);
  for (int time = 0; time < 2; ++time) {
    const Part image = read(frozen, frozen.frame());
    expectPixel(image, 10, 20, {0x12, 0x34, 0x56});
    EXPECT_EQ(std::count(image.samples.begin(), image.samples.end(), 0x34), 30 * 40);
  }
  // Nor is there an error that anybody else would have to make sense of.
  EXPECT_EQ(XReply<xcb_generic_event_t>(xcb_poll_for_event(connection.get())), nullptr);
}

TEST(FrozenScreen, WhereNoMonitorIsItIsBlack) {
  Screen screen({});
  screen.fillWindow(0xffffff);
  const X11Connection connection;
  FrozenScreen frozen(connection);
  frozen.blacken({{0, 0, 20, 30}});
  const Part image = read(frozen, {10, 20, 30, 40});
  expectPixel(image, 9, 9, {0, 0, 0});
  expectPixel(image, 10, 9, {255, 255, 255});
  expectPixel(image, 9, 10, {255, 255, 255});
}

TEST(FrozenScreen, ManyStripsMakeOnePicture) {
  Screen screen({});
  screen.fillWindow(0x123456);
  const X11Connection connection;
  FrozenScreen frozen(connection);
  // More than is asked for at once.
  const Part image = read(frozen, frozen.frame());
  EXPECT_EQ(image.samples.size(), 1280U * 800U * 3U);
  expectPixel(image, 10, 20, {0x12, 0x34, 0x56});
  expectPixel(image, 39, 59, {0x12, 0x34, 0x56});
  expectPixel(image, 40, 59, {0, 0, 0});
  EXPECT_EQ(std::count(image.samples.begin(), image.samples.end(), 0x34), 30 * 40);
}

TEST(FrozenScreen, AScreenOfIndexedColoursIsRefused) {
  Screen screen({"-screen", "0", "1280x800x8", "-cc", "3"});
  const X11Connection connection;
  EXPECT_THROW(FrozenScreen{connection}, std::runtime_error);
}

}  // namespace
}  // namespace lumiwren::testing
