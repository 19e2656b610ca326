#pragma once

#include "support/Process.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QEventLoop>
#include <QTimer>
#include <QVariant>

#include <functional>

namespace lumiwren::testing {

/// Runs the event loop until `condition`, which events of this thread make true. False when it never comes
/// true.
inline bool eventually(const std::function<bool()> &condition) {
  QTimer limit;
  limit.setSingleShot(true);
  limit.start(patience);
  while (!condition()) {
    if (!limit.isActive()) {
      return false;
    }
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return true;
}

/// Calls a method while the event loop runs, so that what is called may live on this thread.
inline QDBusMessage call(const QDBusConnection &bus, QDBusMessage message, const QVariantList &arguments) {
  message.setArguments(arguments);
  const QDBusPendingCallWatcher pending(bus.asyncCall(message));
  eventually([&] { return pending.isFinished(); });
  return pending.reply();
}

}  // namespace lumiwren::testing
