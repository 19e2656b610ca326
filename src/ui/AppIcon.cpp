#include "ui/AppIcon.h"

#include <QApplication>
#include <QPixmap>
#include <QSvgRenderer>

// A resource in a static library is linked in by naming it; the macro works outside namespaces only.
static void linkAppIcon() {
  Q_INIT_RESOURCE(appicon);
}

namespace lumiwren {

QIcon appIcon() {
  // The application keeps it: it takes a while to draw, and is to end with the toolkit.
  if (QApplication::windowIcon().isNull()) {
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
      QPixmap pixmap(size, size);
      pixmap.fill(Qt::transparent);
      QPainter painter(&pixmap);
      drawAppIcon(painter, pixmap.rect());
      painter.end();
      icon.addPixmap(pixmap);
    }
    QApplication::setWindowIcon(icon);
  }
  return QApplication::windowIcon();
}

void drawAppIcon(QPainter &painter, const QRectF &rect) {
  linkAppIcon();
  QSvgRenderer renderer(QStringLiteral(":/AppIcon.svg"));
  Q_ASSERT(renderer.isValid());
  renderer.render(&painter, rect);
}

}  // namespace lumiwren
