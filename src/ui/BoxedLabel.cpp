#include "ui/BoxedLabel.h"

#include "ui/PixelGrid.h"

#include <QPainter>

namespace lumiwren {
namespace {

constexpr qreal boxCornerRadius = 5;

}  // namespace

BoxedLabel::BoxedLabel(const QString &text, TextStyle style, QMargins padding, SemanticColor color,
                       QWidget *parent)
    : TextLabel(text, style, color, parent) {
  setContentsMargins(padding);
  setAlignment(Qt::AlignCenter);
}

void BoxedLabel::setActive(bool active) {
  isActive_ = active;
  update();
}

void BoxedLabel::paintEvent(QPaintEvent *event) {
  {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const SemanticColors colors(palette());
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.controlBackground);
    painter.drawRoundedRect(rectOnPixels(painter, rect()), boxCornerRadius, boxCornerRadius);
    strokeInside(painter, rect(), 1, boxCornerRadius - 0.5,
                 isActive_ ? colors.accent : withOpacity(colors.primary, outlineOpacity));
  }
  TextLabel::paintEvent(event);
}

}  // namespace lumiwren
