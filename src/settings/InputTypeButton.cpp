#include "settings/InputTypeButton.h"

#include "ui/ButtonLook.h"
#include "ui/FocusRing.h"
#include "ui/Fonts.h"
#include "ui/Palette.h"
#include "ui/PixelGrid.h"
#include "ui/Spacing.h"
#include "ui/Symbols.h"
#include "ui/TextStyle.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

constexpr int tileHeight = 40;
constexpr int inputTypeSymbolSize = 18;
constexpr int inputTypeHorizontalPadding = 12;
constexpr double selectedOpacity = 0.12;

}  // namespace

InputTypeButton::InputTypeButton(const QString &title, QString icon, const QString &tooltip,
                                 std::function<void()> action, QWidget *parent)
    : QRadioButton(title, parent), icon_(std::move(icon)) {
  setFont(fontOf(TextStyle::Body));
  setToolTip(tooltip);
  setAccessibleName(title);
  setAccessibleDescription(tooltip);
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  connect(this, &QRadioButton::clicked, this, std::move(action));
}

QSize InputTypeButton::sizeHint() const {
  return {2 * inputTypeHorizontalPadding + scaledSize(inputTypeSymbolSize + spacing::small) +
              fontMetrics().horizontalAdvance(text()),
          std::max(scaledSize(tileHeight), fontMetrics().height())};
}

void InputTypeButton::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    setFont(fontOf(TextStyle::Body));
    updateGeometry();
  }
  QRadioButton::changeEvent(event);
}

bool InputTypeButton::hitButton(const QPoint &position) const {
  return rect().contains(position);
}

void InputTypeButton::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const SemanticColors colors(palette());
  painter.setPen(Qt::NoPen);
  painter.setBrush(isSelected() ? lumiwrenPurple(selectedOpacity) : buttonGround(*this));
  painter.drawRoundedRect(rectOnPixels(painter, rect()), radius::box, radius::box);
  if (showsFocus(*this)) {
    drawFocusRing(painter, *this, rect());
  } else {
    strokeInside(painter, rect(), 1, radius::box - 0.5, isSelected() ? colors.accent : buttonOutline(*this));
  }
  const int size = scaledSize(inputTypeSymbolSize);
  const int gap = scaledSize(spacing::small);
  const int textWidth = fontMetrics().horizontalAdvance(text());
  const int left = (width() - size - gap - textWidth) / 2;
  drawSymbol(painter, icon_, QPointF(left + size / 2.0, height() / 2.0), size,
             isSelected() ? colors.accent : colors.secondary);
  painter.setPen(colors.primary);
  painter.drawText(QRect(left + size + gap, 0, textWidth, height()),
                   Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip, text());
}

}  // namespace lumiwren
