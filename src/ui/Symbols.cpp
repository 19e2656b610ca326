#include "ui/Symbols.h"

#include <QPixmapCache>
#include <QSvgRenderer>
#include <QTransform>

#include <algorithm>
#include <cmath>

// A resource in a static library is linked in by naming it; the macro works outside namespaces only.
static void linkSymbols() {
  Q_INIT_RESOURCE(symbols);
}

namespace lumiwren {
namespace {

QPixmap drawing(const QString &name, int pixels, const QColor &color) {
  const auto key = QStringLiteral("symbol:%1:%2:%3").arg(name).arg(pixels).arg(color.rgba(), 0, 16);
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
  QPixmapCache::insert(key, pixmap);
  return pixmap;
}

int pixelsOf(qreal size, qreal scale) {
  return std::max(1, static_cast<int>(std::lround(size * scale)));
}

}  // namespace

QPixmap symbol(const QString &name, int size, const QColor &color, qreal devicePixelRatio) {
  QPixmap pixmap = drawing(name, pixelsOf(size, devicePixelRatio), color);
  pixmap.setDevicePixelRatio(devicePixelRatio);
  return pixmap;
}

void drawSymbol(QPainter &painter, const QString &name, const QRectF &square, const QColor &color) {
  const QTransform toDevice = painter.deviceTransform();
  const int pixels = pixelsOf(square.width(), toDevice.m11());
  const QPointF centre = toDevice.map(square.center());
  const QTransform place =
      QTransform::fromTranslate(std::round(centre.x() - pixels / 2.0), std::round(centre.y() - pixels / 2.0));
  painter.save();
  // Such that one unit is one pixel, whatever the device does to coordinates after the painter.
  painter.setWorldTransform(place * toDevice.inverted() * painter.worldTransform());
  painter.drawPixmap(0, 0, drawing(name, pixels, color));
  painter.restore();
}

}  // namespace lumiwren
