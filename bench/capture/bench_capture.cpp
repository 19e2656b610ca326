// Taking a picture of the whole screen, beside the toolkit's way, on one X server.

#include "platform/linux/x11/capture/FrozenScreen.h"

#include "net/Row.h"
#include "support/XServer.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

using namespace lumiwren;
using bench::Row;
using testing::XServer;

constexpr int rounds = 15;
constexpr int warmUp = 3;  // until the servers have the memory for it

struct ScreenSize {
  int width;
  int height;
  std::vector<std::string_view> ids;  // of a region, of the whole screen, of a region again
  double budget;                      // of a region
};
// On a small screen the requests take longer than the pixels; neither is to be noticed there.
const ScreenSize sizes[]{{3840, 2160, {"grab", "grab-all", "grab-again"}, 0.25},
                         {1280, 800, {"grab-1280", "grab-all-1280", "grab-again-1280"}, 0.5}};
constexpr PixelRect region{100, 100, 800, 400};

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

/// From the decision to freeze the whole screen to the last pixel of the part that was chosen, with all that
/// is made for it on both sides; nothing of it is done before.
double grab(const X11Connection &connection, const PixelRect &part) {
  std::size_t sum = 0;
  std::optional<FrozenScreen> screen;
  const double time = bench::milliseconds([&] {
    screen.emplace(connection);
    screen->readRows(part, [&sum](std::span<const std::uint8_t> row) { sum += row[row.size() / 2]; });
  });
  screen.reset();
  finish(connection);
  return sum > 0 ? time : throw std::runtime_error("the screen is black");
}

/// The toolkit's way to an image of the whole screen.
double grabWindow() {
  QImage image;
  const double time =
      bench::milliseconds([&] { image = QGuiApplication::primaryScreen()->grabWindow(0).toImage(); });
  return !image.isNull() ? time : throw std::runtime_error("the toolkit has no picture");
}

/// What `measure` gives in a process of its own.
double inNewProcess(const std::function<double()> &measure) {
  int ends[2];
  if (pipe(ends) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  const pid_t child = fork();
  if (child == 0) {
    const double time = measure();
    _exit(write(ends[1], &time, sizeof time) == sizeof time ? EXIT_SUCCESS : EXIT_FAILURE);
  }
  close(ends[1]);
  double time = 0;
  const bool hasTime = read(ends[0], &time, sizeof time) == sizeof time;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return hasTime ? time : throw std::runtime_error("no measurement");
}

double inApplication(const XServer &server, const std::function<double()> &measure) {
  setenv("DISPLAY", server.display().c_str(), 1);
  char name[] = "bench_capture";
  char *arguments[]{name, nullptr};
  int count = 1;
  const QGuiApplication application(count, arguments);
  return measure();
}

struct Times {
  std::vector<double> ours;
  std::vector<double> theirs;

  void print(std::string_view id, double budget) {
    ours.erase(ours.begin(), ours.begin() + warmUp);
    theirs.erase(theirs.begin(), theirs.begin() + warmUp);
    Row{std::string(id), bench::median(ours),        "ms", "QScreen::grabWindow", bench::median(theirs),
        budget,          bench::quantile(ours, 0.99)}
        .print();
  }
};

void measure(const ScreenSize &size) {
  // One for each, so that neither finds the memory that its server had for the other.
  const XServer::Options options{.width = size.width, .height = size.height};
  const XServer ourServer(options);
  const XServer theirServer(options);
  const auto connect = [](const XServer &server) {
    setenv("DISPLAY", server.display().c_str(), 1);
    return X11Connection();
  };
  paintScreen(connect(ourServer), size);
  paintScreen(connect(theirServer), size);

  // The first of a process: the program starts a new one for every picture.
  Times part, everything;
  for (int round = 0; round < warmUp + rounds; ++round) {
    part.ours.push_back(inNewProcess([&] { return grab(connect(ourServer), region); }));
    everything.ours.push_back(inNewProcess([&] {
      return grab(connect(ourServer), {0, 0, size.width, size.height});
    }));
    part.theirs.push_back(inNewProcess([&] { return inApplication(theirServer, grabWindow); }));
  }
  everything.theirs = part.theirs;
  part.print(size.ids[0], size.budget);
  everything.print(size.ids[1], 0.8);

  // Every further one, with the memory of the first.
  Times again;
  const auto connection = connect(ourServer);
  inApplication(theirServer, [&] {
    for (int round = 0; round < warmUp + rounds; ++round) {
      again.ours.push_back(grab(connection, region));
      again.theirs.push_back(grabWindow());
    }
    return 0;
  });
  again.print(size.ids[2], size.budget + 0.1);
}

}  // namespace

int main(int argc, char **argv) {
  const std::vector<std::string> wanted(argv + 1, argv + argc);
  setenv("QT_QPA_PLATFORM", "xcb", 1);
  std::vector<bench::Group> groups;
  for (const ScreenSize &size : sizes) {
    groups.push_back({size.ids, [&size] { measure(size); }});
  }
  return bench::runGroups(wanted, groups);
}
