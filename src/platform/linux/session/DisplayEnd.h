#pragma once

#include "base/Handle.h"

namespace lumiwren {

/// Has `ended` called when the toolkit's connection to the display is lost, before the toolkit ends the
/// process by exit(): that destroys what other threads, the toolkit's own among them, still use. `ended` may
/// be called on any thread, and is to end the process. One handle at a time, of the main thread, held for no
/// longer than the application object; empty where the display is not an X server.
[[nodiscard]] Handle observeDisplayEnd(void (*ended)());

}  // namespace lumiwren
