// Taking a picture of the whole screen, beside the toolkit's way, on one X server.

#include "platform/linux/x11/capture/FrozenScreen.h"

#include "net/Row.h"
#include "support/XServer.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>

#include <cstdlib>

namespace {

using namespace lumiwren;
using bench::Row;

constexpr int width = 3840;
constexpr int height = 2160;
constexpr int rounds = 15;

/// Colours of which none is like its neighbours', so that nobody can guess any.
void paintScreen(const X11Connection &connection) {
  xcb_connection_t *server = connection.get();
  const xcb_gcontext_t context = xcb_generate_id(server);
  xcb_create_gc(server, context, connection.root(), 0, nullptr);
  std::uint32_t random = 1;
  for (int y = 0; y < height; y += 16) {
    for (int x = 0; x < width; x += 16) {
      random = random * 1664525U + 1013904223U;
      xcb_change_gc(server, context, XCB_GC_FOREGROUND, &random);
      const xcb_rectangle_t cell{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 16, 16};
      xcb_poly_fill_rectangle(server, connection.root(), context, 1, &cell);
    }
  }
  const XReply<xcb_get_input_focus_reply_t> done(
      xcb_get_input_focus_reply(server, xcb_get_input_focus(server), nullptr));
}

void measureGrab() {
  const X11Connection connection;
  paintScreen(connection);
  std::vector<double> frozen, everything, theirs;
  std::size_t sum = 0;
  const auto read = [&sum](const FrozenScreen &screen, const PixelRect &part) {
    screen.readRows(part, [&sum](std::span<const std::uint8_t> row) { sum += row[row.size() / 2]; });
  };
  for (int round = 0; round <= rounds; ++round) {
    const double ours = bench::milliseconds([&] { read(FrozenScreen(connection), {100, 100, 800, 400}); });
    const double all = bench::milliseconds([&] { read(FrozenScreen(connection), {0, 0, width, height}); });
    const double their = bench::milliseconds([&] {
      const QImage image = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
      sum += static_cast<std::size_t>(image.pixel(width / 2, height / 2));
    });
    if (round > 0) {
      frozen.push_back(ours);
      everything.push_back(all);
      theirs.push_back(their);
    }
  }
  if (sum == 0) {
    std::exit(EXIT_FAILURE);
  }
  // Freezing the whole screen and reading the region that was chosen, which is all that is ever done with it.
  Row{"grab", bench::median(frozen),        "ms", "QScreen::grabWindow", bench::median(theirs),
      0.25,   bench::quantile(frozen, 0.99)}
      .print();
  Row{"grab-all", bench::median(everything),        "ms", "QScreen::grabWindow", bench::median(theirs),
      0.8,        bench::quantile(everything, 0.99)}
      .print();
}

}  // namespace

int main(int argc, char **argv) {
  const std::vector<std::string> wanted(argv + 1, argv + argc);
  const testing::XServer server(testing::XServer::Options{.width = width, .height = height});
  for (const auto &[name, value] : server.environment()) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  setenv("QT_QPA_PLATFORM", "xcb", 1);
  const QGuiApplication application(argc, argv);
  return bench::runGroups(wanted, {{{"grab", "grab-all"}, measureGrab}});
}
