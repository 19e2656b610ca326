#pragma once

#include <string>

namespace lumiwren {

/// Other programs of the desktop. Main thread.
class Workspace {
public:
  virtual ~Workspace() = default;

  /// Opens an address with the program that the desktop has for it, and a page of the privacy settings
  /// ("x-apple.systempreferences:...") with the desktop's settings program. False when there is none.
  virtual bool openURL(const std::string &url) = 0;
};

}  // namespace lumiwren
