#include "ui/ThinScrollBar.h"

#include "ui/Palette.h"
#include "ui/PixelGrid.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

namespace lumiwren {
namespace {

constexpr int breadth = 10;
constexpr int thumbBreadth = 5;
constexpr int thumbMargin = 2;  // at either end
// Told apart from light and dark backgrounds alike.
constexpr double opacity = 0.5;
constexpr double hoveredOpacity = 0.7;

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
  const QRectF slider =
      style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
  const QRectF thumb((breadth - thumbBreadth) / 2.0, slider.top() + thumbMargin, thumbBreadth,
                     slider.height() - 2 * thumbMargin);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(withOpacity(SemanticColors(palette()).primary,
                               isSliderDown() || underMouse() ? hoveredOpacity : opacity));
  const QRectF aligned = rectOnPixels(painter, thumb);
  const qreal radius = aligned.width() / 2;
  painter.drawRoundedRect(aligned, radius, radius);
}

}  // namespace lumiwren
