#pragma once

#include "base/Handle.h"

#include <cstdint>
#include <functional>

namespace lumiwren {

enum class EventKind { KeyDown, LeftMouseDown, RightMouseDown };

/// Sets of event kinds, one bit each; the values are those of the event masks of the stored design.
namespace eventMask {
inline constexpr std::uint32_t leftMouseDown = 1U << 1;
inline constexpr std::uint32_t rightMouseDown = 1U << 3;
inline constexpr std::uint32_t keyDown = 1U << 10;

constexpr std::uint32_t of(EventKind kind) {
  switch (kind) {
    case EventKind::LeftMouseDown:
      return leftMouseDown;
    case EventKind::RightMouseDown:
      return rightMouseDown;
    case EventKind::KeyDown:
      break;
  }
  return keyDown;
}
}  // namespace eventMask

/// A press of a key or a mouse button. Repeats of a held key are no presses.
struct InputEvent {
  EventKind kind = EventKind::KeyDown;
  std::uint16_t keyCode = 0;        // physical key, see KeyCodes.h; 0 for mouse buttons
  std::uint64_t modifierFlags = 0;  // see KeyCodes.h
  std::uint32_t time = 0;           // the display server's, in ms; one press has one time for all monitors

  /// By the display server's clock, which starts again every 49 days.
  bool isLaterThan(std::uint32_t otherTime) const { return static_cast<std::int32_t>(time - otherTime) > 0; }

  /// Whether the same was pressed, whenever that was.
  friend bool operator==(const InputEvent &one, const InputEvent &other) {
    return one.kind == other.kind && one.keyCode == other.keyCode && one.modifierFlags == other.modifierFlags;
  }
};

enum class LocalEventResult { Pass, Consume };

/// Watching key and mouse-button presses. Main thread; handlers are called on the main thread, and a handle
/// that is dropped is never called again.
class EventMonitors {
public:
  using GlobalHandler = std::function<void(const InputEvent &)>;
  using LocalHandler = std::function<LocalEventResult(const InputEvent &)>;

  virtual ~EventMonitors() = default;

  /// Presses that go to other applications. They are seen only, never taken away. The handle is empty when
  /// this session does not let anybody watch.
  virtual Handle addGlobalMonitor(std::uint32_t mask, GlobalHandler handler) = 0;
  /// Presses that go to this program's own windows, before the window has them. The newest monitor is asked
  /// first; what one consumes reaches neither the older ones nor the window.
  virtual Handle addLocalMonitor(std::uint32_t mask, LocalHandler handler) = 0;
  /// What InputEvent::time says of a press at this moment; earlier ones may not have been told yet. 0 when
  /// this session does not let anybody watch.
  virtual std::uint32_t currentTime() = 0;
};

}  // namespace lumiwren
