#include "settings/Popover.h"

#include "ui/Palette.h"
#include "ui/PixelGrid.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace lumiwren {
namespace {

constexpr qreal cornerRadius = 8;
constexpr int distance = 4;  // from the point that the popover hangs at, and from the edges of the screen

}  // namespace

Popover::Popover(QWidget *contentView, QSize contentSize)
    : QWidget(nullptr, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint),
      contentView_(contentView),
      contentSize_(contentSize) {
  setAttribute(Qt::WA_TranslucentBackground);
  setWindowTitle(QStringLiteral("Lumiwren menu"));
  setAccessibleName(windowTitle());
  auto *const layout = new QVBoxLayout(this);
  layout->setContentsMargins(1, 1, 1, 1);
  layout->addWidget(contentView_);
}

void Popover::showAt(QPoint anchor) {
  const QScreen *screen = QGuiApplication::screenAt(anchor);
  if (screen == nullptr) {
    screen = QGuiApplication::primaryScreen();
  }
  const QRect free = screen->availableGeometry().adjusted(distance, distance, -distance, -distance);
  const int width = contentSize_.width() + 2;
  const int height =
      std::min(std::max(contentSize_.height(), contentView_->sizeHint().height()) + 2, free.height());
  // Below the point, or above it where the tray is at the bottom.
  const bool hangs = anchor.y() + distance + height <= free.bottom() + 1;
  const int y = hangs ? anchor.y() + distance : anchor.y() - distance - height;
  setFixedSize(width, height);
  move(std::clamp(anchor.x() - width / 2, free.left(), free.right() + 1 - width),
       std::clamp(y, free.top(), free.bottom() + 1 - height));
  show();
  raise();
}

void Popover::performClose() {
  close();
}

void Popover::keyPressEvent(QKeyEvent *event) {
  if (event->key() == Qt::Key_Escape) {
    performClose();
  } else {
    QWidget::keyPressEvent(event);
  }
}

void Popover::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const SemanticColors colors(palette());
  painter.setPen(Qt::NoPen);
  painter.setBrush(colors.windowBackground);
  painter.drawRoundedRect(rectOnPixels(painter, rect()), cornerRadius, cornerRadius);
  strokeInside(painter, rect(), 1, cornerRadius - 0.5, withOpacity(colors.primary, 0.2));
}

}  // namespace lumiwren
