#include "app/RunningProgram.h"

#include "app/ProgramInstance.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QVariantMap>

namespace lumiwren {
namespace {

constexpr int answerLimit = 1500;   // ms
constexpr int startLimit = 20'000;  // ms; of a program that the desktop starts for the question

}  // namespace

RunningProgram::RunningProgram(const QDBusConnection &bus) : bus_(bus) {}

RunningProgram::Answer RunningProgram::activate() const {
  return send(QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"), {QVariantMap()},
              /*startsProgram=*/false);
}

RunningProgram::Answer RunningProgram::call(const QString &method, const QVariantList &arguments) const {
  return send(QLatin1String(ProgramInstance::controlInterface), method, arguments, /*startsProgram=*/true);
}

RunningProgram::Answer RunningProgram::callRunning(const QString &method) const {
  return send(QLatin1String(ProgramInstance::controlInterface), method, {}, /*startsProgram=*/false);
}

RunningProgram::Answer RunningProgram::send(const QString &interface, const QString &method,
                                            const QVariantList &arguments, bool startsProgram) const {
  if (!bus_.isConnected()) {
    return {Outcome::NotRunning, {}};
  }
  const auto owner = [this] {
    return bus_.interface()->serviceOwner(QLatin1String(ProgramInstance::name)).value();
  };
  const QString before = owner();
  auto message = QDBusMessage::createMethodCall(QLatin1String(ProgramInstance::name),
                                                QLatin1String(ProgramInstance::path), interface, method);
  message.setArguments(arguments);
  message.setAutoStartService(startsProgram);
  const int limit = before.isEmpty() && startsProgram ? startLimit : answerLimit;
  const QDBusMessage answer = bus_.call(message, QDBus::Block, limit);
  if (answer.type() == QDBusMessage::ReplyMessage) {
    return {Outcome::Done, answer.arguments().value(0).toString()};
  }
  const Outcome ended = before.isEmpty() ? Outcome::NotRunning : Outcome::Gone;
  if (answer.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner")) {
    return {ended, {}};
  }
  switch (QDBusError(answer).type()) {
    case QDBusError::ServiceUnknown:
      return {ended, {}};
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
    case QDBusError::Disconnected:
      return {!before.isEmpty() && owner() != before ? Outcome::Gone : Outcome::Silent, {}};
    default:
      return {Outcome::Refused, answer.errorMessage()};
  }
}

}  // namespace lumiwren
