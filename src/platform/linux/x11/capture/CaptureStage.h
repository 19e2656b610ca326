#pragma once

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/capture/CaptureDisplay.h"
#include "platform/linux/x11/capture/CaptureEvent.h"
#include "platform/linux/x11/capture/CaptureInput.h"
#include "platform/linux/x11/capture/CaptureMonitor.h"
#include "platform/linux/x11/capture/CaptureScene.h"
#include "platform/linux/x11/capture/CaptureWindow.h"
#include "platform/linux/x11/capture/FrozenScreen.h"

#include <functional>
#include <optional>
#include <vector>

namespace lumiwren {

/// The frozen screen on which the user chooses a region, with pointer and keyboard taken from everybody else.
/// All of it ends with this object, and with the process.
class CaptureStage {
public:
  /// What happens next is given to it; false ends the choice.
  using Handler = std::function<bool(const CaptureEvent &)>;
  /// What is to be seen now. `drawsPointer`: the session's pointer cannot follow the user's.
  using Painter = std::function<CaptureScene(bool drawsPointer)>;

  /// Takes the picture of the screen. Throws std::runtime_error when there is no display, or none that this
  /// can be done on.
  CaptureStage();

  /// Whether a region is being chosen already, by another process.
  bool isTaken() const { return display_.isLocked(); }
  PixelRect frame() const { return frozen_.frame(); }
  const std::vector<CaptureMonitor> &monitors() const { return display_.monitors(); }
  PixelPoint pointer() const { return input_ ? input_->pointer() : display_.pointer(); }

  /// Shows the stage, and lets the user act on it until `handler` ends it (true), or until it has to be given
  /// up (false): the monitors have changed, or another process has taken over. Throws std::runtime_error when
  /// the display is gone or the pointer cannot be had.
  bool run(const Sprite &cursor, const Handler &handler, const Painter &painter);
  void movePointer(int dx, int dy) const { input_->movePointer(dx, dy); }
  /// Shows the screen as it is again. Pointer and keyboard are still held.
  void hide() { window_->hide(); }
  /// Of the frozen screen.
  int bitsPerSample() const { return frozen_.bitsPerSample(); }
  void readRows(const PixelRect &part, const FrozenScreen::RowReader &take) { frozen_.readRows(part, take); }
  /// Waits, for a second at the most, until the user has let go of what he pressed: it is not for the program
  /// that gets pointer and keyboard next, nor is its repetition.
  void waitForRelease();

private:
  static const X11Connection &usable(const X11Connection &connection);
  bool endsStage(const xcb_generic_event_t &event) const;
  void waitForServer(std::optional<std::chrono::milliseconds> limit) const;

  X11Connection connection_;
  CaptureDisplay display_;
  FrozenScreen frozen_;
  std::optional<CaptureWindow> window_;
  std::optional<CaptureInput> input_;
};

}  // namespace lumiwren
