#pragma once

#include "base/Signal.h"
#include "platform/DesktopAppearance.h"
#include "platform/linux/appearance/PortalSettings.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace lumiwren {

/// The appearance as the desktop's settings portal has it (org.freedesktop.portal.Settings). It is asked when
/// this is made, which starts it if need be, and again whenever another portal takes its place; what it said
/// last holds while there is none. Without a bus nothing is ever preferred.
class PortalDesktopAppearance : public QObject, public DesktopAppearance {
  Q_OBJECT

public:
  explicit PortalDesktopAppearance(const QDBusConnection &bus);

  Appearance current() override { return current_; }
  Handle observe(std::function<void(const Appearance &)> observer) override;

private Q_SLOTS:
  void settingChanged(const QString &nameSpace, const QString &key, const QDBusVariant &value,
                      const QDBusMessage &signal);

private:
  void ask();
  void take(const QDBusMessage &answer);
  void update();

  QDBusConnection bus_;
  QDBusServiceWatcher owners_;
  std::unique_ptr<QDBusPendingCallWatcher> asking_;
  QString portal_;  // whose answer the settings are; empty before the first one
  PortalSettings settings_;
  Appearance current_;
  Signal<const Appearance &> changed_;
};

}  // namespace lumiwren
