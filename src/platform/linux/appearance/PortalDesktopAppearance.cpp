#include "platform/linux/appearance/PortalDesktopAppearance.h"

#include <QDBusArgument>
#include <QMap>
#include <QStringList>

#include <limits>
#include <utility>

namespace lumiwren {
namespace {

constexpr char portalService[] = "org.freedesktop.portal.Desktop";
constexpr char portalPath[] = "/org/freedesktop/portal/desktop";
constexpr char settingsInterface[] = "org.freedesktop.portal.Settings";
constexpr char valuesSignature[] = "a{sa{sv}}";

// Without a limit there is no timer either. A portal may be a long time starting, and the bus answers for one
// that ends.
constexpr int unlimited = std::numeric_limits<int>::max();

}  // namespace

PortalDesktopAppearance::PortalDesktopAppearance(const QDBusConnection &bus)
    : bus_(bus), owners_(QLatin1String(portalService), bus_) {
  if (!bus_.isConnected()) {
    return;
  }
  connect(&owners_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString &, const QString &, const QString &owner) {
            if (!owner.isEmpty()) {
              ask();
            }
          });
  // The toolkit looks up a slot's types by their names; this one it knows only after its first use.
  qRegisterMetaType<QDBusVariant>();
  // From whomever: with the portal's name the toolkit would wait for the bus to say who that is.
  bus_.connect({}, QLatin1String(portalPath), QLatin1String(settingsInterface),
               QStringLiteral("SettingChanged"), this,
               SLOT(settingChanged(QString, QString, QDBusVariant, QDBusMessage)));
  ask();
}

Handle PortalDesktopAppearance::observe(std::function<void(const Appearance &)> observer) {
  return changed_.observe(std::move(observer));
}

void PortalDesktopAppearance::ask() {
  auto call = QDBusMessage::createMethodCall(QLatin1String(portalService), QLatin1String(portalPath),
                                             QLatin1String(settingsInterface), QStringLiteral("ReadAll"));
  call << QStringList{QLatin1String(PortalSettings::appearanceNamespace),
                      QLatin1String(PortalSettings::gnomeNamespace),
                      QLatin1String(PortalSettings::kdeNamespace)};
  // A question that is still open is forgotten; this one's answer is newer.
  asking_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(call, unlimited));
  connect(asking_.get(), &QDBusPendingCallWatcher::finished, this,
          [this](const QDBusPendingCallWatcher *done) { take(done->reply()); });
}

void PortalDesktopAppearance::take(const QDBusMessage &answer) {
  if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String(valuesSignature)) {
    return;
  }
  portal_ = answer.service();
  settings_ = {};
  const auto values =
      qdbus_cast<QMap<QString, QVariantMap>>(answer.arguments().constFirst().value<QDBusArgument>());
  for (auto group = values.cbegin(); group != values.cend(); ++group) {
    for (auto setting = group->cbegin(); setting != group->cend(); ++setting) {
      settings_.set(group.key(), setting.key(), setting.value());
    }
  }
  update();
}

void PortalDesktopAppearance::settingChanged(const QString &nameSpace, const QString &key,
                                             const QDBusVariant &value, const QDBusMessage &signal) {
  // Before there is an answer, the answer will contain the change.
  if (signal.service() == portal_ && !portal_.isEmpty()) {
    settings_.set(nameSpace, key, value.variant());
    update();
  }
}

void PortalDesktopAppearance::update() {
  if (const Appearance appearance = settings_.appearance(); appearance != current_) {
    current_ = appearance;
    changed_.notify(current_);
  }
}

}  // namespace lumiwren
