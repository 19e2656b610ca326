#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QString>

#include <functional>
#include <memory>

class QDBusArgument;

namespace lumiwren {

/// (iiay): 32 bits per pixel in the order alpha, red, green, blue, whatever the machine's byte order; alpha
/// is not multiplied in.
struct IconPixmap {
  int width = 0;
  int height = 0;
  QByteArray argb;
};
using IconPixmaps = QList<IconPixmap>;

/// (sa(iiay)ss)
struct IconToolTip {
  QString iconName;
  IconPixmaps iconPixmaps;
  QString title;
  QString text;
};

QDBusArgument &operator<<(QDBusArgument &argument, const IconPixmap &pixmap);
const QDBusArgument &operator>>(const QDBusArgument &argument, IconPixmap &pixmap);
QDBusArgument &operator<<(QDBusArgument &argument, const IconToolTip &toolTip);
const QDBusArgument &operator>>(const QDBusArgument &argument, IconToolTip &toolTip);

/// The program's icon as the desktop's panel asks for it over the session bus: the interface
/// org.kde.StatusNotifierItem. It offers itself to each org.kde.StatusNotifierWatcher that comes. The public
/// slots and the properties are the interface. Main thread, which it never blocks.
class StatusNotifierItem : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
  Q_PROPERTY(QString Category READ category CONSTANT)
  Q_PROPERTY(QString Id READ id CONSTANT)
  Q_PROPERTY(QString Title READ title CONSTANT)
  Q_PROPERTY(QString Status READ status CONSTANT)
  Q_PROPERTY(int WindowId READ windowId CONSTANT)
  Q_PROPERTY(QString IconName READ iconName CONSTANT)
  Q_PROPERTY(lumiwren::IconPixmaps IconPixmap READ iconPixmap CONSTANT)
  Q_PROPERTY(lumiwren::IconToolTip ToolTip READ toolTip CONSTANT)
  Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
  Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

public:
  /// Positions are the panel's: pixels of the whole desktop; 0, 0 where it does not know.
  struct Handlers {
    std::function<void(QPoint)> activate;
    std::function<void(QPoint)> showMenu;
    /// Whether a watcher has the item now; called when that is known for the first time, and may repeat
    /// itself.
    std::function<void(bool)> registered;
  };

  /// `menu` is the path of a com.canonical.dbusmenu on the same connection. Panels drop the item when the
  /// connection ends; they do not see this object end.
  StatusNotifierItem(const QDBusConnection &bus, QString menu, Handlers handlers);

  QString category() const { return QStringLiteral("ApplicationStatus"); }
  QString id() const { return QStringLiteral("lumiwren"); }
  QString title() const { return QStringLiteral("Lumiwren"); }
  QString status() const { return QStringLiteral("Active"); }
  int windowId() const { return 0; }
  QString iconName() const { return {}; }
  const IconPixmaps &iconPixmap();
  IconToolTip toolTip() const { return {{}, {}, title(), {}}; }
  bool itemIsMenu() const { return false; }
  QDBusObjectPath menu() const { return QDBusObjectPath(menu_); }

public Q_SLOTS:
  void Activate(int x, int y);
  void SecondaryActivate(int x, int y);
  void ContextMenu(int x, int y);
  void Scroll(int, const QString &) {}

private:
  Q_SLOT void loseWatcher();
  void registerAtWatcher();

  QDBusConnection bus_;
  const QString menu_;
  const Handlers handlers_;
  IconPixmaps pixmaps_;
  QDBusServiceWatcher watcher_;
  std::unique_ptr<QDBusPendingCallWatcher> registration_;
};

}  // namespace lumiwren

Q_DECLARE_METATYPE(lumiwren::IconPixmap)
Q_DECLARE_METATYPE(lumiwren::IconToolTip)
