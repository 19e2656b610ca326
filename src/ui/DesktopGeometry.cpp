#include "ui/DesktopGeometry.h"

#include <QGuiApplication>
#include <QRect>

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
  return toolkitPositionOfPixel(
      {desktop.left() + static_cast<int>(std::lround(desktopPoint.x() * scale)),
       desktop.top() + desktop.height() - static_cast<int>(std::lround(desktopPoint.y() * scale))});
}

QPoint toolkitPositionOfPixel(QPoint pixel) {
  const QScreen *home = QGuiApplication::primaryScreen();
  for (const QScreen *screen : QGuiApplication::screens()) {
    if (pixelGeometry(*screen).contains(pixel)) {
      home = screen;
      break;
    }
  }
  if (!home) {
    return {};
  }
  const QPoint origin = home->geometry().topLeft();
  return origin + (pixel - origin) / home->devicePixelRatio();
}

const QScreen &screenAt(QPoint position) {
  const QScreen *const screen = QGuiApplication::screenAt(position);
  return screen != nullptr ? *screen : *QGuiApplication::primaryScreen();
}

}  // namespace lumiwren
