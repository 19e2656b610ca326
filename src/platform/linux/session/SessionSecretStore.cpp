#include "platform/linux/session/SessionSecretStore.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QList>
#include <QMap>
#include <QString>

namespace lumiwren {
namespace {

QString text(std::string_view view) {
  return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

}  // namespace

bool SessionSecretStore::contains(std::string_view service, std::string_view account) {
  using Attributes = QMap<QString, QString>;
  qDBusRegisterMetaType<Attributes>();
  auto question = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
      QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("SearchItems"));
  question << QVariant::fromValue(
      Attributes{{QStringLiteral("service"), text(service)}, {QStringLiteral("account"), text(account)}});
  const QDBusMessage answer = bus_().call(question, QDBus::Block, static_cast<int>(limits().answers.count()));
  if (answer.type() != QDBusMessage::ReplyMessage) {
    return false;
  }
  // Those that are unlocked, and those that are not.
  for (const QVariant &items : answer.arguments()) {
    if (!qdbus_cast<QList<QDBusObjectPath>>(items).isEmpty()) {
      return true;
    }
  }
  return false;
}

}  // namespace lumiwren
