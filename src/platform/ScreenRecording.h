#pragma once

#include <filesystem>

namespace lumiwren {

/// Pictures of the screen. Main thread.
class ScreenRecording {
public:
  virtual ~ScreenRecording() = default;

  /// Whether this session lets the program see the screen: found out by asking for one pixel.
  virtual bool canRecord() = 0;
  /// The program that lets the user draw a rectangle on the screen. Its arguments are "-i" (interactive),
  /// "-s" (a selection by mouse) and the path of a PNG file, which exists afterwards, complete and readable
  /// by the user only, unless the user has cancelled.
  virtual std::filesystem::path tool() = 0;
};

}  // namespace lumiwren
