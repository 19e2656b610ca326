#pragma once

#include "base/Handle.h"
#include "base/Signal.h"
#include "platform/EventMonitors.h"

#include <cstdint>
#include <utility>

namespace lumiwren {

/// The global monitors in the order in which they were added. One thread. Monitors may come and go while they
/// are being told.
class GlobalMonitorList {
public:
  Handle add(std::uint32_t mask, EventMonitors::GlobalHandler handler) {
    return pressed_.observe([mask, handler = std::move(handler)](const InputEvent &event) {
      if ((mask & eventMask::of(event.kind)) != 0) {
        handler(event);
      }
    });
  }

  void tell(const InputEvent &event) const { pressed_.notify(event); }

private:
  Signal<const InputEvent &> pressed_;
};

}  // namespace lumiwren
