#pragma once

#include "platform/AccessibilityTrust.h"

#include <atomic>

namespace lumiwren::testing {

class FakeAccessibilityTrust : public AccessibilityTrust {
public:
  std::atomic<bool> trusted = true;
  std::atomic<int> prompts = 0;

  bool isProcessTrusted() override { return trusted; }
  bool isProcessTrustedWithPrompt() override {
    ++prompts;
    return trusted;
  }
};

}  // namespace lumiwren::testing
