#pragma once

#include "platform/EventMonitors.h"
#include "platform/LocalMonitorList.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QObject>

namespace lumiwren {

/// The local monitors: presses that the toolkit delivers to this program's windows, asked about before the
/// window, its shortcuts and its widgets have them. Main thread; after the application object is made, and
/// gone before it ends.
class LocalEventMonitors : public QObject {
public:
  LocalEventMonitors();

  /// See EventMonitors.
  Handle addLocalMonitor(std::uint32_t mask, EventMonitors::LocalHandler handler);

  bool eventFilter(QObject *receiver, QEvent *event) override;

private:
  /// One press is delivered several times: as a shortcut, to the window, to a widget and its parents. Until a
  /// release comes, deliveries that agree in this are of one press.
  struct Press {
    quint64 timestamp = 0;
    quint32 scanCode = 0;  // 0 for mouse buttons
    Qt::MouseButton button = Qt::NoButton;
    friend bool operator==(const Press &, const Press &) = default;
  };

  static Press pressOf(const QKeyEvent &event);
  bool consumes(const QKeyEvent &event);
  bool consumes(const QMouseEvent &event);
  bool consumes(const Press &press, const InputEvent &event);

  LocalMonitorList monitors_;
  Press lastPress_;
  bool lastPressConsumed_ = false;
  Press lastRelease_;        // of a key
  quint32 consumedKey_ = 0;  // the last key that was pressed, if its press was consumed
};

}  // namespace lumiwren
