#pragma once

#include "base/Task.h"
#include "platform/SelectionCopy.h"

#include <atomic>
#include <functional>
#include <stop_token>

namespace lumiwren::testing {

/// Counts the copies; `onCopy` stands for the application in front, for instance by writing to the
/// pasteboard.
class FakeSelectionCopy : public SelectionCopy {
public:
  std::function<void()> onCopy;
  std::atomic<int> copies = 0;

  void postCopy(const std::stop_token &token) override {
    throwIfStopped(token);
    ++copies;
    if (onCopy) {
      onCopy();
    }
  }
};

}  // namespace lumiwren::testing
