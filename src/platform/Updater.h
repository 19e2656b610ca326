#pragma once

namespace lumiwren {

/// Looks for new versions of the program and offers them to the user. Main thread.
class Updater {
public:
  virtual ~Updater() = default;

  /// Whether a check can be asked for at this moment.
  virtual bool canCheckForUpdates() = 0;
  /// Looks for a new version and tells the user what came of it. Returns at once.
  virtual void checkForUpdates() = 0;
};

}  // namespace lumiwren
