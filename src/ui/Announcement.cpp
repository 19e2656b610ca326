#include "ui/Announcement.h"

#include <QAccessible>

#if QT_VERSION < QT_VERSION_CHECK(6, 8, 0)
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QVariantMap>
#endif

namespace lumiwren {

void announce(QWidget &source, const QString &text) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  QAccessibleAnnouncementEvent event(&source, text);
  QAccessible::updateAccessibility(&event);
#else
  // Older toolkits have no such event. On their connection to the accessibility bus it is one signal, with
  // the politeness as its first number (AT-SPI: ATSPI_LIVE_POLITE).
  constexpr int polite = 1;
  QAccessibleInterface *const accessible = QAccessible::queryAccessibleInterface(&source);
  QDBusConnection bus(QStringLiteral("a11y"));
  if (!accessible || !bus.isConnected()) {
    return;
  }
  const QString path = QStringLiteral("/org/a11y/atspi/accessible/%1").arg(QAccessible::uniqueId(accessible));
  auto signal = QDBusMessage::createSignal(path, QStringLiteral("org.a11y.atspi.Event.Object"),
                                           QStringLiteral("Announcement"));
  signal.setArguments({QString(), polite, 0, QVariant::fromValue(QDBusVariant(text)), QVariantMap()});
  bus.send(signal);
#endif
}

}  // namespace lumiwren
