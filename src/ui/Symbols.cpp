#include "ui/Symbols.h"

#include "ui/DevicePixels.h"

#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>

// A resource in a static library is linked in by naming it; the macro works outside namespaces only.
static void linkSymbols() {
  Q_INIT_RESOURCE(symbols);
}

namespace lumiwren {

QPixmap symbol(const QString &name, int size, const QColor &color, qreal devicePixelRatio) {
  const int pixels = std::max(1, static_cast<int>(std::lround(size * devicePixelRatio)));
  const auto key = QStringLiteral("symbol:%1:%2:%3:%4")
                       .arg(name)
                       .arg(pixels)
                       .arg(color.rgba(), 0, 16)
                       .arg(devicePixelRatio);
  QPixmap pixmap;
  if (QPixmapCache::find(key, &pixmap)) {
    return pixmap;
  }
  linkSymbols();
  QSvgRenderer renderer(QStringLiteral(":/symbols/%1.svg").arg(name));
  Q_ASSERT(renderer.isValid());
  pixmap = QPixmap(pixels, pixels);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  renderer.render(&painter);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(pixmap.rect(), color);
  painter.end();
  pixmap.setDevicePixelRatio(devicePixelRatio);
  QPixmapCache::insert(key, pixmap);
  return pixmap;
}

void drawSymbol(QPainter &painter, const QString &name, const QPointF &centre, int size,
                const QColor &color) {
  const DevicePixels device(painter);
  const QPixmap drawing = symbol(name, size, color, device.scale());
  const double half = drawing.width() / 2.0;
  const QPointF corner = device.point(centre) - QPointF(half, half);
  painter.drawPixmap(QRect({qRound(corner.x()), qRound(corner.y())}, drawing.size()), drawing);
}

}  // namespace lumiwren
