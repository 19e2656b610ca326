#include "ui/BorderedButton.h"

#include "ui/ButtonLook.h"
#include "ui/FocusRing.h"
#include "ui/Fonts.h"
#include "ui/Motion.h"
#include "ui/Palette.h"
#include "ui/PixelGrid.h"
#include "ui/Symbols.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace lumiwren {
namespace {

constexpr int borderedFontSize = 11;
constexpr int borderedSymbolSize = 13;
constexpr int borderedSpacing = 4;
constexpr int borderedHorizontalPadding = 9;
constexpr int buttonHeight = 24;
constexpr qreal borderedCornerRadius = 6;
constexpr int fadeDuration = 200;  // ms

}  // namespace

BorderedButton::BorderedButton(QWidget *parent) : QPushButton(parent) {
  setFont(systemFont(borderedFontSize));
  setFocusPolicy(Qt::TabFocus);
  setAutoDefault(false);  // A dialog would take it for its default button.
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  fading_.setStartValue(0.0);
  fading_.setEndValue(1.0);
  fading_.setDuration(fadeDuration);
  fading_.setEasingCurve(QEasingCurve::InOutQuad);
  connect(&fading_, &QVariantAnimation::valueChanged, this, [this] {
    updateGeometry();
    update();
  });
}

void BorderedButton::setLabel(const QString &symbolName, const QString &text, LabelChange change) {
  fading_.stop();
  oldSymbolName_ = symbolName_;
  oldText_ = this->text();
  symbolName_ = symbolName;
  setText(text);
  if (change == LabelChange::CrossFade && isVisible() && !reducesMotion()) {
    fading_.start();
  }
  updateGeometry();
  update();
}

int BorderedButton::widthWith(const QString &text) const {
  return 2 * borderedHorizontalPadding + scaledSize(borderedSymbolSize) + scaledSize(borderedSpacing) +
         fontMetrics().horizontalAdvance(text);
}

QSize BorderedButton::sizeHint() const {
  const int width = widthWith(text());
  const int height = std::max(scaledSize(buttonHeight), fontMetrics().height());
  if (fading_.state() != QAbstractAnimation::Running) {
    return {width, height};
  }
  const int oldWidth = widthWith(oldText_);
  return {oldWidth + static_cast<int>(std::lround((width - oldWidth) * fading_.currentValue().toDouble())),
          height};
}

void BorderedButton::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    setFont(systemFont(borderedFontSize));
    updateGeometry();
  }
  QPushButton::changeEvent(event);
}

void BorderedButton::hideEvent(QHideEvent *event) {
  fading_.stop();
  QPushButton::hideEvent(event);
}

void BorderedButton::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const SemanticColors colors(palette());
  const bool isFocused = showsFocus(*this);
  const qreal lineWidth = isFocused ? focusRingWidth : 1;
  painter.setPen(Qt::NoPen);
  painter.setBrush(buttonGround(*this));
  painter.drawRoundedRect(rectOnPixels(painter, rect()), borderedCornerRadius, borderedCornerRadius);
  strokeInside(painter, rect(), lineWidth, borderedCornerRadius - lineWidth / 2,
               isFocused ? colors.accent : buttonOutline(*this));
  if (fading_.state() == QAbstractAnimation::Running) {
    const double part = fading_.currentValue().toDouble();
    painter.setClipRect(rect().adjusted(1, 1, -1, -1));
    drawLabel(painter, oldSymbolName_, oldText_, withOpacity(colors.primary, 1 - part));
    drawLabel(painter, symbolName_, text(), withOpacity(colors.primary, part));
  } else {
    drawLabel(painter, symbolName_, text(), colors.primary);
  }
}

void BorderedButton::drawLabel(QPainter &painter, const QString &symbolName, const QString &text,
                               const QColor &color) const {
  const int size = scaledSize(borderedSymbolSize);
  drawSymbol(painter, symbolName, QPointF(borderedHorizontalPadding + size / 2.0, height() / 2.0), size,
             color);
  painter.setPen(color);
  painter.drawText(rect().adjusted(borderedHorizontalPadding + size + scaledSize(borderedSpacing), 0, 0, 0),
                   Qt::AlignLeft | Qt::AlignVCenter, text);
}

}  // namespace lumiwren
