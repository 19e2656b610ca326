#include "app/StatusNotifierItem.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QtEndian>

#include <utility>

namespace lumiwren {
namespace {

constexpr char watcherService[] = "org.kde.StatusNotifierWatcher";

IconPixmap pixmap(QSvgRenderer &drawing, int size) {
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  drawing.render(&painter);
  painter.end();
  image.convertTo(QImage::Format_ARGB32);
  QByteArray argb(image.sizeInBytes(), Qt::Uninitialized);
  qToBigEndian<quint32>(image.constBits(), static_cast<qsizetype>(size) * size, argb.data());
  return {size, size, argb};
}

}  // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const IconPixmap &pixmap) {
  argument.beginStructure();
  argument << pixmap.width << pixmap.height << pixmap.argb;
  argument.endStructure();
  return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, IconPixmap &pixmap) {
  argument.beginStructure();
  argument >> pixmap.width >> pixmap.height >> pixmap.argb;
  argument.endStructure();
  return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const IconToolTip &toolTip) {
  argument.beginStructure();
  argument << toolTip.iconName << toolTip.iconPixmaps << toolTip.title << toolTip.text;
  argument.endStructure();
  return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, IconToolTip &toolTip) {
  argument.beginStructure();
  argument >> toolTip.iconName >> toolTip.iconPixmaps >> toolTip.title >> toolTip.text;
  argument.endStructure();
  return argument;
}

StatusNotifierItem::StatusNotifierItem(const QDBusConnection &bus, QString menu, Handlers handlers)
    : bus_(bus),
      menu_(std::move(menu)),
      handlers_(std::move(handlers)),
      watcher_(QLatin1String(watcherService), bus_) {
  qDBusRegisterMetaType<lumiwren::IconPixmap>();
  qDBusRegisterMetaType<IconPixmaps>();
  qDBusRegisterMetaType<IconToolTip>();
  bus_.registerObject(QStringLiteral("/StatusNotifierItem"), this,
                      QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
  connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString &, const QString &, const QString &owner) {
            if (owner.isEmpty()) {
              loseWatcher();
            } else {
              registerAtWatcher();
            }
          });
  bus_.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
               QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
               SLOT(loseWatcher()));
  if (!bus_.isConnected()) {
    // A call on a connection that never was does not even fail.
    QMetaObject::invokeMethod(this, &StatusNotifierItem::loseWatcher, Qt::QueuedConnection);
    return;
  }
  // Without asking whether there is a watcher: the answer would come no sooner than the refusal.
  registerAtWatcher();
}

const IconPixmaps &StatusNotifierItem::iconPixmap() {
  if (pixmaps_.isEmpty()) {
    QSvgRenderer drawing(QStringLiteral(":/lumiwren/MenuBarIcon.svg"));
    for (const int size : {16, 22, 24, 32, 48, 64}) {
      pixmaps_.append(pixmap(drawing, size));
    }
  }
  return pixmaps_;
}

void StatusNotifierItem::Activate(int x, int y) {
  // Queued, so that the panel does not wait for what is shown.
  QMetaObject::invokeMethod(
      this,
      [this, x, y] {
        handlers_.activate({x, y});
      },
      Qt::QueuedConnection);
}

void StatusNotifierItem::SecondaryActivate(int x, int y) {
  Activate(x, y);
}

void StatusNotifierItem::ContextMenu(int x, int y) {
  QMetaObject::invokeMethod(
      this,
      [this, x, y] {
        handlers_.showMenu({x, y});
      },
      Qt::QueuedConnection);
}

void StatusNotifierItem::loseWatcher() {
  registration_.reset();
  handlers_.registered(false);
}

void StatusNotifierItem::registerAtWatcher() {
  auto call = QDBusMessage::createMethodCall(
      QLatin1String(watcherService), QStringLiteral("/StatusNotifierWatcher"), QLatin1String(watcherService),
      QStringLiteral("RegisterStatusNotifierItem"));
  call.setAutoStartService(false);
  call << bus_.baseService();
  // A call to an earlier watcher is forgotten; its outcome no longer matters.
  registration_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(call));
  connect(registration_.get(), &QDBusPendingCallWatcher::finished, this,
          [this](const QDBusPendingCallWatcher *done) { handlers_.registered(!done->isError()); });
}

}  // namespace lumiwren
