#include "ui/ThinScrollBar.h"

#include "ui/Palette.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace lumiwren {
namespace {

constexpr int breadth = 10;
constexpr int thumbBreadth = 5;

}  // namespace

ThinScrollBar::ThinScrollBar(QWidget *parent) : QScrollBar(Qt::Vertical, parent) {
  setAttribute(Qt::WA_OpaquePaintEvent, false);
  setAttribute(Qt::WA_Hover);
  setFixedWidth(breadth);
}

QSize ThinScrollBar::sizeHint() const {
  return {breadth, QScrollBar::sizeHint().height()};
}

void ThinScrollBar::paintEvent(QPaintEvent * /*event*/) {
  if (minimum() >= maximum()) {
    return;
  }
  QStyleOptionSlider option;
  initStyleOption(&option);
  const QRectF thumb =
      style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(
      withOpacity(SemanticColors(palette()).primary, isSliderDown() || underMouse() ? 0.45 : 0.25));
  painter.drawRoundedRect(
      QRectF((breadth - thumbBreadth) / 2.0, thumb.top() + 2, thumbBreadth, thumb.height() - 4),
      thumbBreadth / 2.0, thumbBreadth / 2.0);
}

}  // namespace lumiwren
