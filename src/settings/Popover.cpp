#include "settings/Popover.h"

#include "ui/AccessibleRole.h"
#include "ui/DesktopGeometry.h"
#include "ui/Palette.h"
#include "ui/PixelGrid.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

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
      compositor_(panelWindows.observeTranslucency([this] {
        if (isShown_) {
          place();
          update();
        }
      })) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_AlwaysShowToolTips);
  setAttribute(Qt::WA_QuitOnClose, false);
  setWindowTitle(QStringLiteral("Lumiwren menu"));
  setAccessibleName(windowTitle());
  setAccessibleRole(*this, QAccessible::Dialog);
  auto *const layout = new QVBoxLayout(this);
  layout->addWidget(contentView_);
}

void Popover::showAt(QPoint anchor) {
  anchor_ = anchor;
  place();
  isShown_ = true;
  show();
  raise();
  panelWindows_.makeKey(winId());
}

void Popover::place() {
  margins_ = panelWindows_.isTranslucencySupported() ? PanelShadow::margins : QMargins();
  layout()->setContentsMargins(margins_ + QMargins(1, 1, 1, 1));
  const QRect free = screenAt(anchor_).availableGeometry().adjusted(distance, distance, -distance, -distance);
  const int width = contentSize_.width() + 2;
  const int height =
      std::min(std::max(contentSize_.height(), contentView_->sizeHint().height()) + 2, free.height());
  // Below the point, or above it where the tray is at the bottom.
  const bool hangs = anchor_.y() + distance + height <= free.bottom() + 1;
  const int y = hangs ? anchor_.y() + distance : anchor_.y() - distance - height;
  const QRect popover(std::clamp(anchor_.x() - width / 2, free.left(), free.right() + 1 - width),
                      std::clamp(y, free.top(), free.bottom() + 1 - height), width, height);
  const QRect window = popover.marginsAdded(margins_);
  setFixedSize(window.size());
  move(window.topLeft());
  setForm();
}

void Popover::setForm() {
  WindowForm form;
  if (!margins_.isNull()) {
    const qreal scale = devicePixelRatioF();
    const QMargins shadow = PanelShadow::marginsAt(scale);
    form = shadowedForm(qRound(width() * scale), qRound(height() * scale),
                        {shadow.left(), shadow.top(), shadow.right(), shadow.bottom()}, /*grip=*/0);
  }
  panelWindows_.setForm(winId(), form);
}

void Popover::performClose() {
  // Hiding takes the keyboard away too, which is told while the window still counts as visible.
  if (std::exchange(isShown_, false)) {
    panelWindows_.resignKey(winId());
    hide();
  }
}

void Popover::dismiss() {
  if (isShown_) {
    performClose();
    Q_EMIT dismissed();
  }
}

void Popover::changeEvent(QEvent *event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::ActivationChange && !isActiveWindow()) {
    dismiss();
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
  const QRect popover = rect().marginsRemoved(margins_);
  const bool hasShadow = !margins_.isNull();
  if (hasShadow) {
    shadow_.paint(painter, popover);
  }
  const qreal radius = hasShadow ? cornerRadius : 0;
  painter.setPen(Qt::NoPen);
  painter.setBrush(colors.windowBackground);
  painter.drawRoundedRect(rectOnPixels(painter, popover), radius, radius);
  strokeInside(painter, popover, 1, std::max(radius - 0.5, 0.0), withOpacity(colors.primary, 0.2));
}

}  // namespace lumiwren
