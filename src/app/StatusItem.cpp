#include "app/StatusItem.h"

#include "ui/DesktopGeometry.h"

#include <QAction>
#include <QCursor>
#include <QIcon>

#include <utility>

namespace lumiwren {
namespace {

/// What a tray says of a click, in pixels; trays that know no place say nothing.
QPoint onDesktop(QPoint position) {
  return position.isNull() ? QCursor::pos() : toolkitPositionOfPixel(position);
}

}  // namespace

StatusItem::StatusItem(const QDBusConnection &bus, std::function<void(QPoint)> onActivate,
                       std::function<void()> menuAboutToShow)
    : onActivate_(std::move(onActivate)),
      bus_(bus),
      busMenu_(bus_, QStringLiteral("/MenuBar"), menuAboutToShow),
      item_(bus_, QStringLiteral("/MenuBar"),
            {.activate = [this](QPoint position) { onActivate_(onDesktop(position)); },
             .showMenu = [this](QPoint position) { menu_.popup(onDesktop(position)); },
             .registered = [this](bool registered) { showFallback(!registered); }}) {
  QObject::connect(&menu_, &QMenu::aboutToShow, &busMenu_, std::move(menuAboutToShow));
}

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
