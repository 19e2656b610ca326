// lumiwren-screencapture lets the user choose a region of the screen and writes its pixels to a PNG file.

#include "platform/linux/screencapture/NewFile.h"
#include "platform/linux/screencapture/PNGEncoder.h"
#include "platform/linux/screencapture/RegionChooser.h"
#include "platform/linux/x11/capture/CaptureStage.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <span>
#include <string_view>
#include <system_error>

namespace {

using namespace lumiwren;

constexpr int cancelled = 1;
constexpr int wrongUsage = 2;

/// Ends this process together with the one that has started it. False when that one is gone already.
bool dieWithParent() {
  const pid_t parent = getppid();
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  return getppid() == parent;
}

/// Choosing is not finished by these, but the display must be as it was at once, also while it does not
/// answer; it undoes everything by itself when the connection ends.
void cancelOnSignals() {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    std::signal(signal, [](int) { _exit(cancelled); });
  }
}

/// Whether there is a file now.
bool capture(const std::filesystem::path &path) {
  CaptureStage stage;
  if (stage.isTaken()) {
    return false;
  }
  NewFile file(path);
  RegionChooser chooser(stage.frame(), stage.monitors(), stage.pointer(),
                        [&stage](int dx, int dy) { stage.movePointer(dx, dy); });
  auto outcome = RegionChooser::Outcome::Open;
  const bool decided = stage.run(
      chooser.cursor(),
      [&](const CaptureEvent &event) {
        outcome = chooser.handle(event);
        return outcome == RegionChooser::Outcome::Open;
      },
      [&](bool drawsPointer) { return chooser.scene(drawsPointer); });
  if (!decided) {
    return false;
  }
  const bool accepted = outcome == RegionChooser::Outcome::Accepted;
  Bytes picture;
  if (accepted) {
    // Before the overlay goes: then every program below draws itself, and the server is busy with that.
    const PixelRect region = chooser.region();
    PNGEncoder encoder(region.width, region.height, stage.bitsPerSample());
    stage.readRows(region, [&encoder](std::span<const std::uint8_t> row) { encoder.addRow(row); });
    picture = encoder.finish();
  }
  stage.hide();
  if (accepted) {
    file.complete(picture);
  }
  stage.waitForRelease();
  return accepted;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 4 || std::string_view(argv[1]) != "-i" || std::string_view(argv[2]) != "-s" ||
      *argv[3] == '\0') {
    std::fputs("usage: lumiwren-screencapture -i -s PATH\n", stderr);
    return wrongUsage;
  }
  if (!dieWithParent()) {
    return cancelled;
  }
  cancelOnSignals();
  // What is on the screen must not get into a core file.
  prctl(PR_SET_DUMPABLE, 0);
  try {
    return capture(argv[3]) ? EXIT_SUCCESS : cancelled;
  } catch (const std::system_error &error) {
    std::fprintf(stderr, "lumiwren-screencapture: the file cannot be written: %s\n",
                 error.code().message().c_str());
  } catch (const std::exception &error) {
    std::fprintf(stderr, "lumiwren-screencapture: %s\n", error.what());
  }
  return cancelled;
}
