#include "ui/PushButton.h"

#include "ui/ButtonLook.h"
#include "ui/FocusRing.h"
#include "ui/Fonts.h"
#include "ui/Palette.h"
#include "ui/PixelGrid.h"
#include "ui/ProgressIndicator.h"
#include "ui/Spacing.h"
#include "ui/Symbols.h"
#include "ui/TextStyle.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

constexpr int pushHorizontalPadding = 14;
constexpr int smallestWidth = 64;
constexpr int pushSymbolSize = 14;
constexpr int symbolSpacing = 6;
constexpr int linkPadding = 2;
constexpr int wheelSize = 16;
constexpr double disabledOpacity = 0.4;
// What is lit by the pointer or pressed is darker, so that white on it stays readable.
constexpr int hoveredDarkness = 110;
constexpr int pressedDarkness = 125;

}  // namespace

PushButton::PushButton(Kind kind, const QString &label, QWidget *parent) : QPushButton(parent), kind_(kind) {
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
  setAutoDefault(false);  // Else Return would press whatever button has the keyboard, not the default.
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  if (kind_ == Kind::Link) {
    setCursor(Qt::PointingHandCursor);
  }
  adaptFont();
  setLabel(label);
}

QFont PushButton::labelFont() const {
  return fontOf(kind_ == Kind::Prominent ? TextStyle::Label
                : kind_ == Kind::Link    ? TextStyle::Caption
                                         : TextStyle::Body);
}

void PushButton::adaptFont() {
  setFont(labelFont());
}

void PushButton::setLabel(const QString &label) {
  setText(label);
  setShortcut(QKeySequence());  // The toolkit has made one of an ampersand.
  setAccessibleName(label);
  updateGeometry();
}

void PushButton::setSymbol(const QString &symbolName) {
  symbolName_ = symbolName;
  updateGeometry();
  update();
}

void PushButton::setBusy(bool busy) {
  if (busy == (wheel_ != nullptr)) {
    return;
  }
  if (busy) {
    wheel_ = new ProgressIndicator(wheelSize, this);
    placeWheel();
    wheel_->show();
  } else {
    delete std::exchange(wheel_, nullptr);
  }
  update();
}

QSize PushButton::sizeHint() const {
  int width = fontMetrics().horizontalAdvance(text());
  if (!symbolName_.isEmpty()) {
    width += scaledSize(pushSymbolSize) + scaledSize(symbolSpacing);
  }
  if (kind_ == Kind::Link) {
    return {width + 2 * linkPadding, fontMetrics().height() + 2 * linkPadding};
  }
  return {std::max(width + 2 * scaledSize(pushHorizontalPadding), scaledSize(smallestWidth)),
          std::max(scaledSize(controlHeight), fontMetrics().height())};
}

void PushButton::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    adaptFont();
    updateGeometry();
    placeWheel();
  }
  QPushButton::changeEvent(event);
}

void PushButton::resizeEvent(QResizeEvent *event) {
  placeWheel();
  QPushButton::resizeEvent(event);
}

void PushButton::placeWheel() {
  if (wheel_ == nullptr) {
    return;
  }
  wheel_->move((width() - wheel_->width()) / 2, (height() - wheel_->height()) / 2);
}

void PushButton::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  if (!isEnabled()) {
    painter.setOpacity(disabledOpacity);
  }
  const SemanticColors colors(palette());
  if (kind_ != Kind::Link) {
    drawBody(painter);
  }
  if (showsFocus(*this)) {
    drawFocusRing(painter, *this, rect());
  }
  if (wheel_ == nullptr) {
    drawLabel(painter, kind_ == Kind::Prominent     ? QColor(Qt::white)
                       : kind_ == Kind::Destructive ? colors.redText
                       : kind_ == Kind::Link        ? colors.link
                                                    : colors.primary);
  }
}

void PushButton::drawBody(QPainter &painter) {
  painter.setPen(Qt::NoPen);
  if (kind_ == Kind::Prominent) {
    // The ring of the focus has the button's own colour: it needs a gap.
    const qreal gap = showsFocus(*this) ? focusRingWidth + 1 : 0;
    painter.setBrush(isDown()                      ? lumiwrenPurple().darker(pressedDarkness)
                     : isEnabled() && underMouse() ? lumiwrenPurple().darker(hoveredDarkness)
                                                   : lumiwrenPurple());
    painter.drawRoundedRect(rectOnPixels(painter, QRectF(rect()).adjusted(gap, gap, -gap, -gap)),
                            radius::control - gap, radius::control - gap);
    return;
  }
  painter.setBrush(buttonGround(*this));
  painter.drawRoundedRect(rectOnPixels(painter, rect()), radius::control, radius::control);
  if (!showsFocus(*this)) {
    strokeInside(painter, rect(), 1, radius::control - 0.5, buttonOutline(*this));
  }
}

void PushButton::drawLabel(QPainter &painter, const QColor &color) {
  const bool hasSymbol = !symbolName_.isEmpty();
  const int symbolWidth = hasSymbol ? scaledSize(pushSymbolSize) + scaledSize(symbolSpacing) : 0;
  const int textWidth = fontMetrics().horizontalAdvance(text());
  const int left = (width() - symbolWidth - textWidth) / 2;
  if (hasSymbol) {
    drawSymbol(painter, symbolName_, QPointF(left + scaledSize(pushSymbolSize) / 2.0, height() / 2.0),
               scaledSize(pushSymbolSize), color);
  }
  if (kind_ == Kind::Link && isEnabled() && (underMouse() || isDown())) {
    QFont underlined = font();
    underlined.setUnderline(true);
    painter.setFont(underlined);
  }
  painter.setPen(kind_ == Kind::Link && isDown() ? withOpacity(color, 0.6) : color);
  painter.drawText(QRect(left + symbolWidth, 0, textWidth, height()),
                   Qt::AlignCenter | Qt::TextSingleLine | Qt::TextDontClip, text());
}

}  // namespace lumiwren
