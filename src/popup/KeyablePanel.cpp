#include "popup/KeyablePanel.h"

#include "popup/PanelForm.h"
#include "popup/ResizeFrame.h"
#include "ui/DesktopGeometry.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QWindow>

#include <utility>

namespace lumiwren {
namespace {

// How much of the edges is for resizing, on either side. With a shadow most of it is outside, where it is in
// nobody's way.
constexpr int gripOutside = 6;
constexpr int gripInside = 3;
constexpr int opaqueGripInside = 5;

QSize toQSize(Size size) {
  return {static_cast<int>(size.width), static_cast<int>(size.height)};
}

QRect toToolkit(const Rect &frame) {
  return {toolkitPosition({frame.minX(), frame.maxY()}), toQSize(frame.size)};
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
  contentView_->setParent(this);
  resizeFrame_ = new ResizeFrame(this);
  setLook(panelWindows_.isTranslucencySupported());
  compositor_ = panelWindows_.observeTranslucency([this] { followCompositor(); });
  resize(toQSize(defaultSize).grownBy(margins_));
  winId();  // The native window, ahead of its first use.
  updateForm(size());
  if (isTranslucent_) {
    shadow_.prepare(devicePixelRatioF());
  }
}

KeyablePanel::~KeyablePanel() = default;

void KeyablePanel::makeKey() {
  allowsKeyStatus_ = true;
  windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, false);
  panelWindows_.makeKey(winId());
}

Rect KeyablePanel::frame() {
  const Rect window = panelWindows_.frame(winId());
  return {{window.minX() + margins_.left(), window.minY() + margins_.bottom()},
          {window.size.width - margins_.left() - margins_.right(),
           window.size.height - margins_.top() - margins_.bottom()}};
}

void KeyablePanel::setFrame(const Rect &frame) {
  const QRect geometry = toToolkit(frame).marginsAdded(margins_);
  // First: in a larger window of the old form a click outside that form goes to what is below.
  updateForm(geometry.size());
  setGeometry(geometry);
}

void KeyablePanel::orderFrontRegardless() {
  followCompositor();
  raise();
  show();
}

void KeyablePanel::followCompositor() {
  const bool isTranslucent = panelWindows_.isTranslucencySupported();
  if (isTranslucent == isTranslucent_) {
    return;
  }
  letGo();
  const QRect panel = geometry().marginsRemoved(margins_);
  setLook(isTranslucent);
  const QRect window = panel.marginsAdded(margins_);
  updateForm(window.size());
  setGeometry(window);
  arrange();
  update();
}

void KeyablePanel::setLook(bool isTranslucent) {
  isTranslucent_ = isTranslucent;
  margins_ = isTranslucent ? PanelShadow::margins : QMargins();
  setMinimumSize(toQSize(minimumPanelSize).grownBy(margins_));
  setMaximumSize(toQSize(maximumPanelSize).grownBy(margins_));
  resizeFrame_->setReach(isTranslucent ? gripOutside : 0, isTranslucent ? gripInside : opaqueGripInside);
}

void KeyablePanel::updateForm(QSize windowSize) {
  const qreal scale = devicePixelRatioF();
  const auto pixels = [scale](int points) { return qRound(points * scale); };
  const QSize window(pixels(windowSize.width()), pixels(windowSize.height()));
  const QMargins shadow = PanelShadow::marginsAt(scale);
  auto form = isTranslucent_ ? shadowedForm(window.width(), window.height(),
                                            {shadow.left(), shadow.top(), shadow.right(), shadow.bottom()},
                                            pixels(gripOutside))
                             : roundedForm(window, cornerRadius * scale);
  if (form != form_) {
    form_ = std::move(form);
    panelWindows_.setForm(winId(), form_);
  }
}

void KeyablePanel::arrange() {
  contentView_->setGeometry(panelRect());
  resizeFrame_->surround(panelRect());
}

void KeyablePanel::orderOut() {
  while (auto *const menu = QApplication::activePopupWidget()) {
    menu->close();
  }
  if (allowsKeyStatus_) {
    panelWindows_.resignKey(winId());
  }
  hide();
  if (auto *const focused = focusWidget()) {
    focused->clearFocus();
  }
  letGo();
  allowsKeyStatus_ = false;
  windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus);
}

void KeyablePanel::letGo() {
  grip_.reset();
  resizeFrame_->letGo();
}

void KeyablePanel::resizeEvent(QResizeEvent *event) {
  arrange();
  updateForm(event->size());
  QWidget::resizeEvent(event);
}

void KeyablePanel::paintEvent(QPaintEvent *event) {
  const int corner = static_cast<int>(cornerRadius);
  const QRect panel = panelRect();
  const bool isInside = panel.adjusted(corner, 0, -corner, 0).contains(event->rect()) ||
                        panel.adjusted(0, corner, 0, -corner).contains(event->rect());
  if (isTranslucent_ && !isInside) {
    QPainter painter(this);
    shadow_.paint(painter, panel);
  }
}

void KeyablePanel::mousePressEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) {
    grip_ = Grip{event->globalPosition(), pos()};
  }
}

void KeyablePanel::mouseMoveEvent(QMouseEvent *event) {
  if (!event->buttons().testFlag(Qt::LeftButton)) {
    grip_.reset();  // The release went to somebody else.
  }
  if (grip_) {
    move(grip_->window + (event->globalPosition() - grip_->pointer).toPoint());
  }
}

void KeyablePanel::mouseReleaseEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) {
    grip_.reset();
  }
}

}  // namespace lumiwren
