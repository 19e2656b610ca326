#pragma once

#include "platform/ScreenRecording.h"

namespace lumiwren::testing {

class FakeScreenRecording : public ScreenRecording {
public:
  bool canRecord() override {
    ++probes;
    return allowed;
  }
  std::filesystem::path tool() override { return "/usr/libexec/screencapture"; }

  bool allowed = true;
  int probes = 0;
};

}  // namespace lumiwren::testing
