#include "ui/Symbols.h"

#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <cmath>

// A resource in a static library is linked in by naming it; the macro works outside namespaces only.
static void linkSymbols() {
  Q_INIT_RESOURCE(symbols);
}

namespace lumiwren {

QPixmap symbol(const QString &name, int size, const QColor &color, qreal devicePixelRatio) {
  const auto key =
      QStringLiteral("symbol:%1:%2:%3:%4").arg(name).arg(size).arg(color.rgba(), 0, 16).arg(devicePixelRatio);
  QPixmap pixmap;
  if (QPixmapCache::find(key, &pixmap)) {
    return pixmap;
  }
  linkSymbols();
  QSvgRenderer drawing(QStringLiteral(":/symbols/%1.svg").arg(name));
  Q_ASSERT(drawing.isValid());
  const int pixels = static_cast<int>(std::ceil(size * devicePixelRatio));
  pixmap = QPixmap(pixels, pixels);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  drawing.render(&painter);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(pixmap.rect(), color);
  painter.end();
  pixmap.setDevicePixelRatio(devicePixelRatio);
  QPixmapCache::insert(key, pixmap);
  return pixmap;
}

}  // namespace lumiwren
