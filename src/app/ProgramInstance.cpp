#include "app/ProgramInstance.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnectionInterface>
#include <QMetaObject>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <utility>

namespace lumiwren {

/// What desktops ask of every program: "menu", "settings", "quit", and "run-action" with a name or an
/// identifier are the actions.
class ProgramInstance::FreedesktopApplication : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
  explicit FreedesktopApplication(ProgramInstance &instance)
      : QDBusAbstractAdaptor(&instance), instance_(instance) {}

public Q_SLOTS:
  void Activate(const QVariantMap & /*platformData*/) { instance_.later(instance_.operations_.showMenu); }
  void Open(const QStringList & /*uris*/, const QVariantMap &platformData) { Activate(platformData); }
  void ActivateAction(const QString &action, const QVariantList &parameters,
                      const QVariantMap & /*platformData*/, const QDBusMessage &message) {
    const Operations &operations = instance_.operations_;
    if (action == QLatin1String("run-action") && parameters.size() == 1) {
      instance_.runAction(parameters.first().toString(), message);
    } else if (action == QLatin1String("menu")) {
      instance_.later(operations.showMenu);
    } else if (action == QLatin1String("settings")) {
      instance_.later(operations.showSettings);
    } else if (action == QLatin1String("quit")) {
      instance_.later(operations.quit);
    } else {
      instance_.refuse(message, QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"),
                       QStringLiteral("there is no such action, or not with these parameters"));
    }
  }

private:
  ProgramInstance &instance_;
};

/// The commands of the command line.
class ProgramInstance::ControlInterface : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.lumiwren.Control")

public:
  explicit ControlInterface(ProgramInstance &instance)
      : QDBusAbstractAdaptor(&instance), instance_(instance) {}

public Q_SLOTS:
  void ShowMenu() { instance_.later(instance_.operations_.showMenu); }
  void ShowSettings() { instance_.later(instance_.operations_.showSettings); }
  void Quit() { instance_.later(instance_.operations_.quit); }
  void RunAction(const QString &nameOrIdentifier, const QDBusMessage &message) {
    instance_.runAction(nameOrIdentifier, message);
  }
  QString ListActions() { return instance_.operations_.actions(); }

private:
  ProgramInstance &instance_;
};

ProgramInstance::ProgramInstance(const QDBusConnection &bus) : bus_(bus) {
  // They are this object's children.
  new FreedesktopApplication(*this);
  new ControlInterface(*this);
  if (bus_.isConnected()) {
    // Before the name can be seen by anybody.
    bus_.registerObject(QLatin1String(path), this, QDBusConnection::ExportAdaptors);
  }
}

bool ProgramInstance::claim() {
  return !bus_.isConnected() || bus_.interface()->registerService(QLatin1String(name)).value() ==
                                    QDBusConnectionInterface::ServiceRegistered;
}

void ProgramInstance::serve(Operations operations) {
  operations_ = std::move(operations);
}

void ProgramInstance::resign() {
  if (bus_.isConnected()) {
    bus_.unregisterService(QLatin1String(name));
  }
}

void ProgramInstance::later(const std::function<void()> &operation) {
  QMetaObject::invokeMethod(this, operation, Qt::QueuedConnection);
}

void ProgramInstance::runAction(const QString &nameOrIdentifier, const QDBusMessage &message) {
  if (const auto run = operations_.actionNamed(nameOrIdentifier)) {
    later(run);
  } else {
    refuse(message, QStringLiteral("com.lumiwren.Error.NoSuchAction"),
           QStringLiteral("no action has this name or identifier"));
  }
}

void ProgramInstance::refuse(const QDBusMessage &message, const QString &error, const QString &text) {
  message.setDelayedReply(true);
  bus_.send(message.createErrorReply(error, text));
}

}  // namespace lumiwren

#include "ProgramInstance.moc"
