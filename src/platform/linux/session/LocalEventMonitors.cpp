#include "platform/linux/session/LocalEventMonitors.h"

#include "platform/KeyCodes.h"
#include "platform/linux/EvdevKeyCodes.h"
#include "platform/linux/KeySymbols.h"

#include <QCoreApplication>

#include <optional>
#include <utility>

namespace lumiwren {
namespace {

constexpr quint32 nativeCapsLock = 1U << 1U;  // the modifier of that number on X11 and in XKB

std::uint64_t modifierFlags(Qt::KeyboardModifiers modifiers) {
  std::uint64_t flags = 0;
  for (const auto &[qt, flag] :
       {std::pair(Qt::ShiftModifier, modifier::shift), std::pair(Qt::ControlModifier, modifier::control),
        std::pair(Qt::AltModifier, modifier::option), std::pair(Qt::MetaModifier, modifier::command)}) {
    flags |= modifiers.testFlag(qt) ? flag : 0;
  }
  return flags;
}

}  // namespace

LocalEventMonitors::Press LocalEventMonitors::pressOf(const QKeyEvent &event) {
  return {event.timestamp(), event.nativeScanCode(), Qt::NoButton};
}

LocalEventMonitors::LocalEventMonitors() {
  QCoreApplication::instance()->installEventFilter(this);
}

Handle LocalEventMonitors::addLocalMonitor(std::uint32_t mask, EventMonitors::LocalHandler handler) {
  return monitors_.add(mask, std::move(handler));
}

bool LocalEventMonitors::eventFilter(QObject *receiver, QEvent *event) {
  switch (event->type()) {
    case QEvent::ShortcutOverride:
      if (consumes(static_cast<const QKeyEvent &>(*event))) {
        event->accept();  // Then no shortcut is looked for, and the key press follows, to be consumed too.
        return true;
      }
      return false;
    case QEvent::KeyPress:
      return consumes(static_cast<const QKeyEvent &>(*event));
    case QEvent::KeyRelease:
      lastRelease_ = pressOf(static_cast<const QKeyEvent &>(*event));
      lastPress_ = {};
      return false;
    case QEvent::MouseButtonRelease:
      lastPress_ = {};
      return false;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
      return receiver->isWindowType() && consumes(static_cast<const QMouseEvent &>(*event));
    default:
      return false;
  }
}

bool LocalEventMonitors::consumes(const QKeyEvent &event) {
  if (event.nativeScanCode() < evdevOffset) {
    return false;  // Made up within the program; no key was pressed.
  }
  const Press press = pressOf(event);
  // A repeat is a release and a press of the same moment. The toolkit misses it when the two come apart.
  if (event.isAutoRepeat() || press == lastRelease_) {
    // No press, but what a consumed press would go on to do must not happen either.
    return press.scanCode == consumedKey_;
  }
  lastRelease_ = {};
  const auto code = pressedKeyCode(press.scanCode - evdevOffset, event.nativeVirtualKey());
  if (!code) {
    return false;
  }
  const std::uint64_t capsLock = (event.nativeModifiers() & nativeCapsLock) != 0 ? modifier::capsLock : 0;
  const bool consumed =
      consumes(press, {EventKind::KeyDown, *code, modifierFlags(event.modifiers()) | capsLock,
                       static_cast<std::uint32_t>(event.timestamp())});
  consumedKey_ = consumed ? press.scanCode : 0;
  return consumed;
}

bool LocalEventMonitors::consumes(const QMouseEvent &event) {
  if (event.button() != Qt::LeftButton && event.button() != Qt::RightButton) {
    return false;
  }
  const auto kind = event.button() == Qt::LeftButton ? EventKind::LeftMouseDown : EventKind::RightMouseDown;
  return consumes({event.timestamp(), 0, event.button()},
                  {kind, 0, modifierFlags(event.modifiers()), static_cast<std::uint32_t>(event.timestamp())});
}

bool LocalEventMonitors::consumes(const Press &press, const InputEvent &event) {
  if (press != lastPress_) {
    lastPress_ = press;
    lastPressConsumed_ = monitors_.ask(event) == LocalEventResult::Consume;
  }
  return lastPressConsumed_;
}

}  // namespace lumiwren
