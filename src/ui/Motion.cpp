#include "ui/Motion.h"

#include "base/Signal.h"

#include <utility>

namespace lumiwren {
namespace {

bool currentlyReducesMotion = false;

Signal<> &changed() {
  static Signal<> signal;
  return signal;
}

}  // namespace

bool reducesMotion() {
  return currentlyReducesMotion;
}

void setReducesMotion(bool reduces) {
  if (reduces != currentlyReducesMotion) {
    currentlyReducesMotion = reduces;
    changed().notify();
  }
}

Handle observeReducesMotion(std::function<void()> observer) {
  return changed().observe(std::move(observer));
}

}  // namespace lumiwren
