#include "ui/DesktopGeometry.h"

#include <QGuiApplication>
#include <QRect>
#include <QScreen>

#include <cmath>

namespace lumiwren {
namespace {

/// The toolkit scales each screen's inside but keeps its place in pixels.
QRect pixelGeometry(const QScreen &screen) {
  return {screen.geometry().topLeft(), screen.geometry().size() * screen.devicePixelRatio()};
}

}  // namespace

QPoint toolkitPosition(const QPointF &desktopPoint) {
  const QScreen *const primary = QGuiApplication::primaryScreen();
  if (!primary) {
    return {};
  }
  const QRect desktop = pixelGeometry(*primary);
  const qreal scale = primary->devicePixelRatio();
  const QPoint pixel(
      desktop.left() + static_cast<int>(std::lround(desktopPoint.x() * scale)),
      desktop.top() + desktop.height() - static_cast<int>(std::lround(desktopPoint.y() * scale)));
  for (const QScreen *screen : QGuiApplication::screens()) {
    if (const QRect pixels = pixelGeometry(*screen); pixels.contains(pixel)) {
      return pixels.topLeft() + (pixel - pixels.topLeft()) / screen->devicePixelRatio();
    }
  }
  return desktop.topLeft() + (pixel - desktop.topLeft()) / scale;
}

}  // namespace lumiwren
