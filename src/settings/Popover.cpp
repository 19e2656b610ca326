#include "settings/Popover.h"

#include "ui/AccessibleRole.h"
#include "ui/Palette.h"
#include "ui/PixelGrid.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

constexpr qreal cornerRadius = 8;
constexpr int distance = 4;  // from the point that the popover hangs at, and from the edges of the screen

}  // namespace

// Not a popup of the toolkit's: those take every key and click of the session for themselves, and a screen
// reader does not find them.
Popover::Popover(QWidget *contentView, QSize contentSize, PanelWindows &panelWindows)
    : QWidget(nullptr,
              Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::BypassWindowManagerHint),
      contentView_(contentView),
      contentSize_(contentSize),
      panelWindows_(panelWindows),
      compositor_(panelWindows.observeTranslucency([this] { update(); })) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_AlwaysShowToolTips);
  setAttribute(Qt::WA_QuitOnClose, false);
  setWindowTitle(QStringLiteral("Lumiwren menu"));
  setAccessibleName(windowTitle());
  setAccessibleRole(*this, QAccessible::Dialog);
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
  isShown_ = true;
  show();
  raise();
  panelWindows_.makeKey(winId());
}

void Popover::performClose() {
  // Hiding takes the keyboard away too, which is told while the window still counts as visible.
  if (std::exchange(isShown_, false)) {
    panelWindows_.resignKey(winId());
    hide();
  }
}

void Popover::changeEvent(QEvent *event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::ActivationChange && !isActiveWindow() && isShown_) {
    performClose();
    Q_EMIT dismissed();
  }
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
  const qreal radius = panelWindows_.isTranslucencySupported() ? cornerRadius : 0;
  painter.drawRoundedRect(rectOnPixels(painter, rect()), radius, radius);
  strokeInside(painter, rect(), 1, std::max(radius - 0.5, 0.0), withOpacity(colors.primary, 0.2));
}

}  // namespace lumiwren
