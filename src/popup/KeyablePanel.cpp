#include "popup/KeyablePanel.h"

#include "popup/ResizeFrame.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainterPath>
#include <QRegion>
#include <QScreen>
#include <QWindow>

#include <cmath>

namespace lumiwren {
namespace {

constexpr qreal cornerRadius = 12;

QSize toQSize(Size size) {
  return {static_cast<int>(size.width), static_cast<int>(size.height)};
}

/// The toolkit scales each screen's inside but keeps its place in pixels.
QRect pixelGeometry(const QScreen &screen) {
  return {screen.geometry().topLeft(), screen.geometry().size() * screen.devicePixelRatio()};
}

QRect toToolkit(const Rect &frame) {
  const QScreen *const primary = QGuiApplication::primaryScreen();
  if (!primary) {
    return {QPoint(), toQSize(frame.size)};
  }
  const QRect desktop = pixelGeometry(*primary);
  const qreal scale = primary->devicePixelRatio();
  const QPoint pixel(desktop.left() + static_cast<int>(std::lround(frame.minX() * scale)),
                     desktop.top() + desktop.height() - static_cast<int>(std::lround(frame.maxY() * scale)));
  for (const QScreen *screen : QGuiApplication::screens()) {
    if (const QRect pixels = pixelGeometry(*screen); pixels.contains(pixel)) {
      return {pixels.topLeft() + (pixel - pixels.topLeft()) / screen->devicePixelRatio(),
              toQSize(frame.size)};
    }
  }
  return {desktop.topLeft() + (pixel - desktop.topLeft()) / scale, toQSize(frame.size)};
}

}  // namespace

KeyablePanel::KeyablePanel(PanelWindows &panelWindows, std::unique_ptr<QWidget> contentView)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus),
      panelWindows_(panelWindows),
      contentView_(contentView.release()),
      resizeFrame_(nullptr) {
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_AlwaysShowToolTips);
  setAttribute(Qt::WA_QuitOnClose, false);
  setWindowTitle(QStringLiteral("Lumiwren"));
  setAccessibleName(windowTitle());
  setMinimumSize(toQSize(minimumPanelSize));
  setMaximumSize(toQSize(maximumPanelSize));
  contentView_->setParent(this);
  resizeFrame_ = new ResizeFrame(this);
  resize(toQSize(defaultSize));
  winId();  // The native window, ahead of its first use.
}

KeyablePanel::~KeyablePanel() = default;

void KeyablePanel::makeKey() {
  allowsKeyStatus_ = true;
  windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, false);
  panelWindows_.makeKey(winId());
}

Rect KeyablePanel::frame() {
  return panelWindows_.frame(winId());
}

void KeyablePanel::setFrame(const Rect &frame) {
  const QRect geometry = toToolkit(frame);
  // First: in a larger window of the old shape a click outside that shape goes to what is below.
  updateShape(geometry.size());
  setGeometry(geometry);
}

void KeyablePanel::orderFrontRegardless() {
  isTranslucent_ = panelWindows_.isTranslucencySupported();
  updateShape(size());
  raise();
  show();
}

void KeyablePanel::orderOut() {
  if (allowsKeyStatus_) {
    panelWindows_.resignKey(winId());
  }
  hide();
  if (auto *const focused = focusWidget()) {
    focused->clearFocus();
  }
  grip_.reset();
  allowsKeyStatus_ = false;
  windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus);
}

void KeyablePanel::resizeEvent(QResizeEvent *event) {
  contentView_->setGeometry(rect());
  resizeFrame_->setGeometry(rect());
  updateShape(event->size());
  QWidget::resizeEvent(event);
}

void KeyablePanel::updateShape(QSize size) {
  if (isTranslucent_) {
    clearMask();
    return;
  }
  // Without translucency the corners are cut off; what is drawn outside them would be black.
  QPainterPath path;
  path.addRoundedRect(QRect(QPoint(), size), cornerRadius, cornerRadius);
  setMask(QRegion(path.toFillPolygon().toPolygon()));
}

void KeyablePanel::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) {
    grip_ = event->globalPosition().toPoint() - pos();
  }
}

void KeyablePanel::mouseMoveEvent(QMouseEvent *event) {
  if (grip_) {
    move(event->globalPosition().toPoint() - *grip_);
  }
}

void KeyablePanel::mouseReleaseEvent(QMouseEvent * /*event*/) {
  grip_.reset();
}

}  // namespace lumiwren
