#include "app/DBusMenu.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMetaType>
#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

constexpr int rootId = 0;

QVariantMap allProperties(const MenuEntry &entry) {
  if (entry.separator) {
    return {{QStringLiteral("type"), QStringLiteral("separator")}};
  }
  // A single underscore would mark the access key.
  QVariantMap properties{{QStringLiteral("label"), QString(entry.label).replace(u'_', QStringLiteral("__"))},
                         {QStringLiteral("enabled"), entry.enabled}};
  if (entry.checked) {
    properties.insert(QStringLiteral("toggle-type"), QStringLiteral("checkmark"));
    properties.insert(QStringLiteral("toggle-state"), *entry.checked ? 1 : 0);
  }
  return properties;
}

}  // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuItem &item) {
  argument.beginStructure();
  argument << item.id << item.properties;
  argument.endStructure();
  return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuItem &item) {
  argument.beginStructure();
  argument >> item.id >> item.properties;
  argument.endStructure();
  return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuLayout &layout) {
  argument.beginStructure();
  argument << layout.id << layout.properties << layout.children;
  argument.endStructure();
  return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuLayout &layout) {
  argument.beginStructure();
  argument >> layout.id >> layout.properties >> layout.children;
  argument.endStructure();
  return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuEvent &event) {
  argument.beginStructure();
  argument << event.id << event.type << event.data << event.timestamp;
  argument.endStructure();
  return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuEvent &event) {
  argument.beginStructure();
  argument >> event.id >> event.type >> event.data >> event.timestamp;
  argument.endStructure();
  return argument;
}

DBusMenu::DBusMenu(QDBusConnection bus, const QString &path, std::function<void()> aboutToShow)
    : aboutToShow_(std::move(aboutToShow)) {
  qDBusRegisterMetaType<DBusMenuItem>();
  qDBusRegisterMetaType<QList<DBusMenuItem>>();
  qDBusRegisterMetaType<DBusMenuLayout>();
  qDBusRegisterMetaType<DBusMenuEvent>();
  qDBusRegisterMetaType<QList<DBusMenuEvent>>();
  bus.registerObject(path, this,
                     QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals |
                         QDBusConnection::ExportAllProperties);
}

void DBusMenu::setEntries(std::vector<MenuEntry> entries) {
  const bool looksDifferent =
      !std::equal(entries_.begin(), entries_.end(), entries.begin(), entries.end(),
                  [](const MenuEntry &one, const MenuEntry &other) { return one.looksLike(other); });
  entries_ = std::move(entries);
  if (looksDifferent) {
    Q_EMIT LayoutUpdated(++revision_, rootId);
  }
}

QString DBusMenu::textDirection() const {
  return QGuiApplication::isRightToLeft() ? QStringLiteral("rtl") : QStringLiteral("ltr");
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                         DBusMenuLayout &layout) {
  if (!has(parentId)) {
    refuse(parentId);
    return 0;
  }
  layout = {parentId, properties(parentId, propertyNames), {}};
  if (parentId == rootId && recursionDepth != 0) {
    for (const MenuEntry &each : entries_) {
      layout.children.append(
          QVariant::fromValue(DBusMenuLayout{each.id, properties(each.id, propertyNames), {}}));
    }
  }
  return revision_;
}

QList<DBusMenuItem> DBusMenu::GetGroupProperties(const QList<int> &ids, const QStringList &propertyNames) {
  QList<DBusMenuItem> items;
  const auto append = [&](int id) { items.append({id, properties(id, propertyNames)}); };
  if (ids.isEmpty()) {
    append(rootId);
    std::for_each(entries_.begin(), entries_.end(), [&](const MenuEntry &each) { append(each.id); });
  }
  for (const int id : ids) {
    if (has(id)) {
      append(id);
    }
  }
  return items;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString &name) {
  const QVariant value = has(id) ? properties(id, {}).value(name) : QVariant();
  if (!value.isValid()) {
    refuse(id);
  }
  return QDBusVariant(value);
}

void DBusMenu::Event(int id, const QString &type, const QDBusVariant &, uint) {
  if (has(id)) {
    handle(id, type);
  } else {
    refuse(id);
  }
}

QList<int> DBusMenu::EventGroup(const QList<DBusMenuEvent> &events) {
  QList<int> unknown;
  for (const DBusMenuEvent &event : events) {
    if (has(event.id)) {
      handle(event.id, event.type);
    } else {
      unknown.append(event.id);
    }
  }
  return unknown;
}

bool DBusMenu::AboutToShow(int id) {
  if (!has(id)) {
    refuse(id);
  }
  return id == rootId && prepare();
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors) {
  std::copy_if(ids.begin(), ids.end(), std::back_inserter(idErrors), [this](int id) { return !has(id); });
  return ids.contains(rootId) && prepare() ? QList<int>{rootId} : QList<int>();
}

bool DBusMenu::prepare() {
  const uint before = revision_;
  aboutToShow_();
  return revision_ != before;
}

const MenuEntry *DBusMenu::entry(int id) const {
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [id](const MenuEntry &each) { return each.id == id; });
  return found == entries_.end() ? nullptr : &*found;
}

bool DBusMenu::has(int id) const {
  return id == rootId || entry(id);
}

QVariantMap DBusMenu::properties(int id, const QStringList &names) const {
  QVariantMap properties = id == rootId
                               ? QVariantMap{{QStringLiteral("children-display"), QStringLiteral("submenu")}}
                               : allProperties(*entry(id));
  if (!names.isEmpty()) {
    properties.removeIf([&](const auto &property) { return !names.contains(property.key()); });
  }
  return properties;
}

void DBusMenu::handle(int id, const QString &eventType) {
  const MenuEntry *const chosen = entry(id);
  if (chosen && chosen->enabled && chosen->action && eventType == u"clicked") {
    // The panel gets its answer first: what the action does may take long, or end the program.
    QMetaObject::invokeMethod(this, chosen->action, Qt::QueuedConnection);
  }
}

void DBusMenu::refuse(int id) const {
  sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("no such entry or property: %1").arg(id));
}

}  // namespace lumiwren
