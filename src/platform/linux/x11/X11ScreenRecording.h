#pragma once

#include "platform/ScreenRecording.h"
#include "platform/linux/x11/X11Connection.h"

#include <filesystem>

namespace lumiwren {

/// An X server shows its screen to every client; one that has none to show answers with an error, or, in a
/// Wayland session, with a black one.
class X11ScreenRecording : public ScreenRecording {
public:
  /// The connection outlives this object.
  X11ScreenRecording(const X11Connection &connection, std::filesystem::path tool);

  bool canRecord() override;
  std::filesystem::path tool() override;

private:
  const X11Connection &connection_;
  const std::filesystem::path tool_;
};

}  // namespace lumiwren
