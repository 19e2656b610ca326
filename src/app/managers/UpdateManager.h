#pragma once

#include "platform/Updater.h"

namespace lumiwren {

/// What the program's views need of updates. Main thread.
class UpdateManager {
public:
  explicit UpdateManager(Updater &updater) : updater_(updater) {}

  Updater &updater() const { return updater_; }

private:
  Updater &updater_;
};

}  // namespace lumiwren
