#pragma once

#include "platform/Workspace.h"

#include <string>
#include <vector>

namespace lumiwren::testing {

/// Remembers what was to be opened.
class FakeWorkspace : public Workspace {
public:
  bool openURL(const std::string &url) override {
    opened.push_back(url);
    return canOpen;
  }

  bool canOpen = true;
  std::vector<std::string> opened;
};

}  // namespace lumiwren::testing
