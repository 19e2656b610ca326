#pragma once

#include "app/DBusMenu.h"
#include "app/MenuEntry.h"
#include "app/StatusNotifierItem.h"

#include <QDBusConnection>
#include <QMenu>
#include <QPoint>
#include <QSystemTrayIcon>

#include <functional>
#include <optional>
#include <vector>

namespace lumiwren {

/// The program's icon in the desktop's tray, with its menu: a StatusNotifierItem wherever there is a watcher
/// for these, at whatever time it comes, and an icon in the XEmbed tray for as long as there is none. Main
/// thread.
class StatusItem {
public:
  /// `onActivate` gets where the icon was chosen, in Qt's coordinates of the desktop.
  /// `menuAboutToShow` may set other entries for the showing that comes.
  /// `bus` is a connection that ends with this object, because panels drop the item when its connection ends.
  StatusItem(const QDBusConnection &bus, std::function<void(QPoint)> onActivate,
             std::function<void()> menuAboutToShow);
  StatusItem(const StatusItem &) = delete;
  StatusItem &operator=(const StatusItem &) = delete;
  ~StatusItem();

  /// What the menu holds that desktops show on a right click, and some on every click.
  void setEntries(const std::vector<MenuEntry> &entries);

private:
  void showFallback(bool shown);

  std::function<void(QPoint)> onActivate_;
  QDBusConnection bus_;
  QMenu menu_;
  DBusMenu busMenu_;
  std::optional<QSystemTrayIcon> fallback_;
  StatusNotifierItem item_;
};

}  // namespace lumiwren
