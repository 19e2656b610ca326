#include "ui/SheetHost.h"

#include "ui/Motion.h"
#include "ui/Palette.h"
#include "ui/PixelGrid.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <cmath>

namespace lumiwren {
namespace {

constexpr int sheetMargin = 12;     // between the edges of the host and of the sheet, at the least
constexpr int slideDuration = 200;  // ms
constexpr qreal sheetCornerRadius = 10;
constexpr double dimming = 0.22;
constexpr double dimmingInTheDark = 0.5;

}  // namespace

/// The sheet itself: a background, and a world of its own for keys.
class SheetHost::Sheet : public QWidget {
public:
  Sheet(std::unique_ptr<QWidget> content, SheetHost *host) : QWidget(host), content_(content.get()) {
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetNoConstraint);  // The host decides.
    layout->addWidget(content.release());
  }

  QWidget &content() { return *content_; }

protected:
  bool event(QEvent *event) override {
    const bool handled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest) {
      static_cast<SheetHost *>(parentWidget())->arrange();
    }
    return handled;
  }

  bool focusNextPrevChild(bool next) override {
    const auto takesTab = [this](const QWidget &widget) {
      return isAncestorOf(&widget) && widget.isVisible() && widget.isEnabled() && !widget.focusProxy() &&
             (widget.focusPolicy() & Qt::TabFocus) == Qt::TabFocus;
    };
    QWidget *const focused = window()->focusWidget();
    QWidget *const start = isAncestorOf(focused) ? focused : this;
    const auto after = [next](QWidget *widget) {
      return next ? widget->nextInFocusChain() : widget->previousInFocusChain();
    };
    for (QWidget *widget = after(start); widget != start; widget = after(widget)) {
      if (takesTab(*widget)) {
        widget->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
      }
    }
    return true;
  }

  void keyPressEvent(QKeyEvent *event) override {
    if (event->key() == Qt::Key_Escape) {
      Q_EMIT static_cast<SheetHost *>(parentWidget())->escaped();
    }
    // No key that the sheet has no use for is meant for what is below.
  }

  void paintEvent(QPaintEvent * /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const SemanticColors colors(palette());
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.windowBackground);
    painter.drawRoundedRect(rectOnPixels(painter, rect()), sheetCornerRadius, sheetCornerRadius);
    strokeInside(painter, rect(), 1, sheetCornerRadius, withOpacity(colors.primary, outlineOpacity));
  }

private:
  QWidget *const content_;
};

SheetHost::SheetHost(QWidget *parent) : QWidget(parent) {
  hide();
  parent->installEventFilter(this);
  sliding_.setDuration(slideDuration);
  sliding_.setEasingCurve(QEasingCurve::OutCubic);
  connect(&sliding_, &QVariantAnimation::valueChanged, this,
          [this](const QVariant &progress) { setProgress(progress.toDouble()); });
}

void SheetHost::present(std::unique_ptr<QWidget> content) {
  Q_ASSERT(!sheet_);
  if (isHidden()) {
    previousFocus_ = window()->focusWidget();
  }
  leaving_ = {};
  setAttribute(Qt::WA_TransparentForMouseEvents, false);
  sheet_ = new Sheet(std::move(content), this);
  arrange();
  raise();
  show();
  sheet_->show();
  sheet_->content().setFocus(Qt::PopupFocusReason);
  slide(1);
}

void SheetHost::dismiss() {
  if (!sheet_) {
    return;
  }
  auto *const ended = sheet_;
  const bool isSeen = isVisible() && !reducesMotion();
  leaving_ = isSeen ? ended->grab() : QPixmap();
  sheet_ = nullptr;
  ended->hide();
  ended->deleteLater();  // It may be the one who calls.
  if (previousFocus_ && previousFocus_->isVisible() && previousFocus_->isEnabled()) {
    previousFocus_->setFocus(Qt::OtherFocusReason);
  } else if (auto *const focused = window()->focusWidget(); ended->isAncestorOf(focused)) {
    focused->clearFocus();
  }
  setAttribute(Qt::WA_TransparentForMouseEvents);  // What slides out is in nobody's way.
  slide(0);
}

void SheetHost::slide(double progress) {
  sliding_.stop();
  if (!isVisible() || reducesMotion()) {
    setProgress(progress);
    return;
  }
  sliding_.setStartValue(progress_);
  sliding_.setEndValue(progress);
  sliding_.start();
}

void SheetHost::setProgress(double progress) {
  progress_ = progress;
  if (!sheet_ && progress == 0) {
    leaving_ = {};
    hide();
    return;
  }
  if (sheet_) {
    sheet_->move(placeOf(sheet_->size()));
  }
  update();
}

QPoint SheetHost::placeOf(QSize sheet) const {
  const int in = (height() - sheet.height()) / 2;
  const int out = -sheet.height();
  return {(width() - sheet.width()) / 2, out + static_cast<int>(std::lround((in - out) * progress_))};
}

void SheetHost::arrange() {
  setGeometry(parentWidget()->rect());
  if (sheet_) {
    const QSize room = size().shrunkBy({sheetMargin, sheetMargin, sheetMargin, sheetMargin});
    sheet_->resize(sheet_->content().sizeHint().boundedTo(room));
    sheet_->move(placeOf(sheet_->size()));
  }
}

bool SheetHost::eventFilter(QObject * /*watched*/, QEvent *event) {
  if (event->type() == QEvent::Resize) {
    arrange();
  }
  return false;
}

void SheetHost::hideEvent(QHideEvent *event) {
  // Nobody sees the rest of the sliding, and the timer need not run for it.
  if (sliding_.state() == QAbstractAnimation::Running) {
    const double end = sliding_.endValue().toDouble();
    sliding_.stop();
    setProgress(end);
  }
  QWidget::hideEvent(event);
}

void SheetHost::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  const SemanticColors colors(palette());
  // Where the window is transparent, as at its round corners, it stays so.
  painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
  painter.fillRect(rect(), withOpacity(Qt::black, progress_ * (colors.isDark ? dimmingInTheDark : dimming)));
  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  if (!leaving_.isNull()) {
    painter.drawPixmap(placeOf(leaving_.deviceIndependentSize().toSize()), leaving_);
  }
}

}  // namespace lumiwren
