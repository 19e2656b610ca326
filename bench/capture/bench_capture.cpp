// Taking a picture of the whole screen, beside the toolkit's way, on one X server.

#include "platform/linux/x11/capture/FrozenScreen.h"

#include "net/Row.h"
#include "support/XServer.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace lumiwren;
using bench::Row;

constexpr int rounds = 15;
constexpr int warmUp = 3;  // until the servers have the memory for it

struct ScreenSize {
  int width;
  int height;
  std::vector<std::string_view> ids;
  double budget;  // of a region
};
// On a small screen the requests take longer than the pixels; neither is to be noticed there.
const ScreenSize sizes[]{{3840, 2160, {"grab", "grab-all"}, 0.25},
                         {1280, 800, {"grab-1280", "grab-all-1280"}, 0.5}};

/// Waits until the server has done all that it was asked for.
void finish(const X11Connection &connection) {
  const XReply<xcb_get_input_focus_reply_t> done(
      xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
}

/// Colours of which none is like its neighbours', so that nobody can guess any.
void paintScreen(const X11Connection &connection, const ScreenSize &size) {
  xcb_connection_t *server = connection.get();
  const xcb_gcontext_t context = xcb_generate_id(server);
  xcb_create_gc(server, context, connection.root(), 0, nullptr);
  std::uint32_t random = 1;
  for (int y = 0; y < size.height; y += 16) {
    for (int x = 0; x < size.width; x += 16) {
      random = random * 1664525U + 1013904223U;
      xcb_change_gc(server, context, XCB_GC_FOREGROUND, &random);
      const xcb_rectangle_t cell{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 16, 16};
      xcb_poly_fill_rectangle(server, connection.root(), context, 1, &cell);
    }
  }
  finish(connection);
}

/// The toolkit's application is on the other server.
void measure(const ScreenSize &size, const X11Connection &connection) {
  std::size_t sum = 0;
  const auto grab = [&](const PixelRect &part) {
    std::optional<FrozenScreen> screen;
    const double time = bench::milliseconds([&] {
      screen.emplace(connection);
      screen->readRows(part, [&sum](std::span<const std::uint8_t> row) { sum += row[row.size() / 2]; });
    });
    screen.reset();
    finish(connection);
    return time;
  };
  std::vector<double> ours, everything, theirs;
  for (int round = 0; round < warmUp + rounds; ++round) {
    ours.push_back(grab({100, 100, 800, 400}));
    everything.push_back(grab({0, 0, size.width, size.height}));
    QImage image;
    theirs.push_back(
        bench::milliseconds([&] { image = QGuiApplication::primaryScreen()->grabWindow(0).toImage(); }));
    sum += static_cast<std::size_t>(image.pixel(size.width / 2, size.height / 2));
  }
  if (sum == 0) {
    std::exit(EXIT_FAILURE);
  }
  theirs.erase(theirs.begin(), theirs.begin() + warmUp);
  const auto print = [&](std::string_view id, std::vector<double> &times, double budget) {
    times.erase(times.begin(), times.begin() + warmUp);
    Row{std::string(id), bench::median(times),        "ms", "QScreen::grabWindow", bench::median(theirs),
        budget,          bench::quantile(times, 0.99)}
        .print();
  };
  // From the decision to freeze the whole screen to the last pixel of the region that was chosen, with all
  // that is made for it on both sides; nothing of it is done before.
  print(size.ids[0], ours, size.budget);
  print(size.ids[1], everything, 0.8);
}

}  // namespace

int main(int argc, char **argv) {
  const std::vector<std::string> wanted(argv + 1, argv + argc);
  setenv("QT_QPA_PLATFORM", "xcb", 1);
  std::vector<bench::Group> groups;
  for (const ScreenSize &size : sizes) {
    const auto measureOnServers = [&] {
      // One for each, so that neither finds the memory that its server had for the other.
      const testing::XServer::Options options{.width = size.width, .height = size.height};
      const testing::XServer ours(options);
      const testing::XServer theirs(options);
      setenv("DISPLAY", ours.display().c_str(), 1);
      const X11Connection connection;
      paintScreen(connection, size);
      setenv("DISPLAY", theirs.display().c_str(), 1);
      const QGuiApplication application(argc, argv);
      paintScreen(X11Connection(), size);
      measure(size, connection);
    };
    groups.push_back({size.ids, measureOnServers});
  }
  return bench::runGroups(wanted, groups);
}
