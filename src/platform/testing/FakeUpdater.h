#pragma once

#include "platform/Updater.h"

namespace lumiwren::testing {

class FakeUpdater : public Updater {
public:
  bool canCheckForUpdates() override { return canCheck; }
  void checkForUpdates() override { ++checks; }

  bool canCheck = true;
  int checks = 0;
};

}  // namespace lumiwren::testing
