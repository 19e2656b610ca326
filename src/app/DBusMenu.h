#pragma once

#include "app/MenuEntry.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <vector>

class QDBusArgument;

namespace lumiwren {

/// (ia{sv})
struct DBusMenuItem {
  int id = 0;
  QVariantMap properties;
};

/// (ia{sv}av), each child a layout again.
struct DBusMenuLayout {
  int id = 0;
  QVariantMap properties;
  QVariantList children;
};

/// (isvu)
struct DBusMenuEvent {
  int id = 0;
  QString type;
  QDBusVariant data;
  uint timestamp = 0;
};

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuItem &item);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuItem &item);
QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuLayout &layout);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuLayout &layout);
QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuEvent &event);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuEvent &event);

/// A flat menu that the desktop's panel shows in its own look: the interface com.canonical.dbusmenu, version
/// 3. The public slots and the properties are that interface. Main thread.
class DBusMenu : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
  Q_PROPERTY(uint Version READ version CONSTANT)
  Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
  Q_PROPERTY(QString Status READ status CONSTANT)
  Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
  /// Is on `bus` at `path` for as long as it lives. `aboutToShow` may set other entries for the showing that
  /// is announced; panels that announce none show what was set before.
  DBusMenu(QDBusConnection bus, const QString &path, std::function<void()> aboutToShow);

  /// Takes the place of all entries there were. Panels are told when it looks different.
  void setEntries(std::vector<MenuEntry> entries);

  uint version() const { return 3; }
  QString textDirection() const;
  QString status() const { return QStringLiteral("normal"); }
  QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
  // The types are written in full because QtDBus looks them up by their text.
  uint GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                 lumiwren::DBusMenuLayout &layout);
  QList<lumiwren::DBusMenuItem> GetGroupProperties(const QList<int> &ids, const QStringList &propertyNames);
  QDBusVariant GetProperty(int id, const QString &name);
  void Event(int id, const QString &type, const QDBusVariant &data, uint timestamp);
  QList<int> EventGroup(const QList<lumiwren::DBusMenuEvent> &events);
  bool AboutToShow(int id);
  QList<int> AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors);

Q_SIGNALS:
  void LayoutUpdated(uint revision, int parent);

private:
  const MenuEntry *entry(int id) const;
  bool has(int id) const;
  QVariantMap properties(int id, const QStringList &names) const;
  void handle(int id, const QString &eventType);
  void refuse(int id) const;

  /// Whether the entries look different from before.
  bool prepare();

  const std::function<void()> aboutToShow_;
  std::vector<MenuEntry> entries_;
  uint revision_ = 0;
};

}  // namespace lumiwren

Q_DECLARE_METATYPE(lumiwren::DBusMenuItem)
Q_DECLARE_METATYPE(lumiwren::DBusMenuLayout)
Q_DECLARE_METATYPE(lumiwren::DBusMenuEvent)
