#pragma once

#include "base/Handle.h"

#include <functional>

namespace lumiwren {

/// Whether the user wants things to change without moving. Main thread; false until it is set. Whoever starts
/// an animation asks first; what never ends by itself observes.
bool reducesMotion();
void setReducesMotion(bool reduces);
/// The observer is called after each change, for as long as the handle is held.
Handle observeReducesMotion(std::function<void()> observer);

}  // namespace lumiwren
