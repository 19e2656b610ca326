#pragma once

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusError>
#include <QObject>
#include <QString>
#include <QStringList>

namespace lumiwren::testing {

/// What a desktop's panel is on the bus; a later one takes the place of an earlier one.
class WatcherFake : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")

public:
  enum class Answer { Accept, Refuse, None };

  explicit WatcherFake(const QDBusConnection &bus, Answer answer = Answer::Accept)
      : bus_(bus), answer_(answer) {
    bus_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this, QDBusConnection::ExportAllSlots);
    bus_.interface()->registerService(QStringLiteral("org.kde.StatusNotifierWatcher"),
                                      QDBusConnectionInterface::ReplaceExistingService,
                                      QDBusConnectionInterface::AllowReplacement);
  }
  ~WatcherFake() override { bus_.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher")); }

  /// The items that were offered, accepted or not.
  const QStringList &items() const { return items_; }

public Q_SLOTS:
  void RegisterStatusNotifierItem(const QString &item) {
    items_.append(item);
    if (answer_ == Answer::Refuse) {
      sendErrorReply(QDBusError::AccessDenied, QStringLiteral("no"));
    } else if (answer_ == Answer::None) {
      setDelayedReply(true);
    }
  }

private:
  QDBusConnection bus_;
  Answer answer_;
  QStringList items_;
};

}  // namespace lumiwren::testing
