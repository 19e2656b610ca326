#include "ui/Divider.h"

#include "ui/DevicePixels.h"
#include "ui/Palette.h"

#include <QPainter>

namespace lumiwren {

Divider::Divider(QWidget *parent) : QWidget(parent) {
  setFixedHeight(1);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Divider::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  const DevicePixels device(painter);
  const QRect line = device.rect(rect());
  painter.fillRect(line.x(), line.y(), line.width(), device.hairline(), SemanticColors(palette()).separator);
}

}  // namespace lumiwren
