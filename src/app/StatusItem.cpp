#include "app/StatusItem.h"

#include <QAction>
#include <QCursor>
#include <QGuiApplication>
#include <QIcon>
#include <QScreen>

#include <utility>

namespace lumiwren {
namespace {

/// Where a panel's position is on Qt's desktop, on which each screen is smaller by its scale factor but
/// begins at the same point.
QPoint onDesktop(QPoint position) {
  if (position.isNull()) {
    return QCursor::pos();
  }
  for (const QScreen *screen : QGuiApplication::screens()) {
    const QPoint origin = screen->geometry().topLeft();
    const qreal scale = screen->devicePixelRatio();
    if (QRect(origin, screen->geometry().size() * scale).contains(position)) {
      return origin + (position - origin) / scale;
    }
  }
  return position;
}

}  // namespace

StatusItem::StatusItem(const QDBusConnection &bus, std::function<void(QPoint)> onActivate)
    : onActivate_(std::move(onActivate)),
      bus_(bus),
      busMenu_(bus_, QStringLiteral("/MenuBar")),
      item_(bus_, QStringLiteral("/MenuBar"),
            {.activate = [this](QPoint position) { onActivate_(onDesktop(position)); },
             .showMenu = [this](QPoint position) { menu_.popup(onDesktop(position)); },
             .registered = [this](bool registered) { showFallback(!registered); }}) {}

StatusItem::~StatusItem() {
  QDBusConnection::disconnectFromBus(bus_.name());
}

void StatusItem::setEntries(const std::vector<MenuEntry> &entries) {
  menu_.clear();
  for (const MenuEntry &entry : entries) {
    if (entry.separator) {
      menu_.addSeparator();
      continue;
    }
    // A single ampersand would mark the access key.
    QAction *const action = menu_.addAction(QString(entry.label).replace(u'&', QStringLiteral("&&")));
    action->setEnabled(entry.enabled);
    action->setCheckable(entry.checked.has_value());
    action->setChecked(entry.checked.value_or(false));
    // Queued, so that an action may change the menu it came from.
    QObject::connect(action, &QAction::triggered, &busMenu_, entry.action, Qt::QueuedConnection);
  }
  busMenu_.setEntries(entries);
}

void StatusItem::showFallback(bool shown) {
  if (shown == fallback_.has_value()) {
    return;
  }
  if (!shown) {
    fallback_.reset();
    return;
  }
  fallback_.emplace(QIcon(QStringLiteral(":/lumiwren/MenuBarIcon.svg")));
  fallback_->setToolTip(QStringLiteral("Lumiwren"));
  fallback_->setContextMenu(&menu_);
  QObject::connect(&*fallback_, &QSystemTrayIcon::activated, &menu_,
                   [this](QSystemTrayIcon::ActivationReason reason) {
                     if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::MiddleClick) {
                       onActivate_(QCursor::pos());
                     }
                   });
  fallback_->show();
}

}  // namespace lumiwren
