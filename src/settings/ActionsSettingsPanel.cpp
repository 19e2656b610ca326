#include "settings/ActionsSettingsPanel.h"

#include "ui/Fonts.h"
#include "ui/InputGuard.h"
#include "ui/Palette.h"
#include "ui/PixelGrid.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

#include <utility>

namespace lumiwren {
namespace {

constexpr qreal panelCornerRadius = 12;

}  // namespace

ActionsSettingsPanel::ActionsSettingsPanel(PanelWindows &panelWindows, std::unique_ptr<QWidget> contentView,
                                           std::function<void()> onClose)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      panelWindows_(panelWindows),
      onClose_(std::move(onClose)),
      compositor_(panelWindows.observeTranslucency([this] { update(); })) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_AlwaysShowToolTips);
  setAttribute(Qt::WA_QuitOnClose, false);
  setWindowTitle(QStringLiteral("Actions"));
  setAccessibleName(windowTitle());
  new InputGuard(*this);
  auto *const layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(contentView.release());
  adaptSize();
}

void ActionsSettingsPanel::adaptSize() {
  const QSize room =
      screen()->availableGeometry().size().shrunkBy({screenMargin, screenMargin, screenMargin, screenMargin});
  const QSize size(scaledSize(contentSize.width()), scaledSize(contentSize.height()));
  setFixedSize(size.boundedTo(room).expandedTo(contentSize));
}

void ActionsSettingsPanel::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    adaptSize();
  }
  QWidget::changeEvent(event);
}

void ActionsSettingsPanel::closeEvent(QCloseEvent *event) {
  event->ignore();
  onClose_();
}

void ActionsSettingsPanel::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) {
    grip_ = Grip{event->globalPosition(), pos()};
  }
}

void ActionsSettingsPanel::mouseMoveEvent(QMouseEvent *event) {
  // Not left to the window manager: some miss a release that comes before they are asked, and the window then
  // stays at the pointer.
  if (!event->buttons().testFlag(Qt::LeftButton)) {
    grip_.reset();  // The release went to somebody else.
  }
  if (grip_) {
    move(grip_->window + (event->globalPosition() - grip_->pointer).toPoint());
  }
}

void ActionsSettingsPanel::mouseReleaseEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) {
    grip_.reset();
  }
}

void ActionsSettingsPanel::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const qreal radius = panelWindows_.isTranslucencySupported() ? panelCornerRadius : 0;
  const SemanticColors colors(palette());
  painter.setPen(Qt::NoPen);
  painter.setBrush(colors.windowBackground);
  painter.drawRoundedRect(rect(), radius, radius);
  strokeInside(painter, rect(), 1, radius, withOpacity(colors.primary, outlineOpacity));
}

}  // namespace lumiwren
