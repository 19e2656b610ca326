#include "app/ProgramInstance.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QMetaObject>

#include <utility>

namespace lumiwren {
namespace {

constexpr int answerLimit = 2000;  // ms

}  // namespace

ProgramInstance::ProgramInstance(const QDBusConnection &bus, std::function<void()> onActivate)
    : bus_(bus), onActivate_(std::move(onActivate)) {
  if (!bus_.isConnected()) {
    return;
  }
  // Before the name can be seen by anybody.
  bus_.registerObject(QLatin1String(path), this, QDBusConnection::ExportAllSlots);
  const auto answer = bus_.interface()->registerService(QLatin1String(name));
  isFirst_ = answer.value() == QDBusConnectionInterface::ServiceRegistered;
}

bool ProgramInstance::activateFirst() const {
  auto call = QDBusMessage::createMethodCall(QLatin1String(name), QLatin1String(path),
                                             QStringLiteral("org.freedesktop.Application"),
                                             QStringLiteral("Activate"));
  call << QVariantMap();
  return bus_.call(call, QDBus::Block, answerLimit).type() == QDBusMessage::ReplyMessage;
}

void ProgramInstance::Activate(const QVariantMap & /*platformData*/) {
  // Queued, so that the caller does not wait for what is shown.
  QMetaObject::invokeMethod(this, onActivate_, Qt::QueuedConnection);
}

}  // namespace lumiwren
