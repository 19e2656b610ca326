#include "ui/ThinScrollBar.h"

#include "ui/Palette.h"
#include "ui/PixelGrid.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>

#include <algorithm>

namespace lumiwren {
namespace {

constexpr int breadth = 10;
constexpr int thumbBreadth = 5;
constexpr int thumbMargin = 2;  // at either end
// Told apart from light and dark backgrounds alike.
constexpr double opacity = 0.5;
constexpr double hoveredOpacity = 0.7;

}  // namespace

ThinScrollBar::ThinScrollBar(QWidget *parent) : ThinScrollBar(Qt::Vertical, parent) {}

ThinScrollBar::ThinScrollBar(Qt::Orientation orientation, QWidget *parent) : QScrollBar(orientation, parent) {
  setAttribute(Qt::WA_OpaquePaintEvent, false);
  setAttribute(Qt::WA_Hover);
  if (orientation == Qt::Vertical) {
    setFixedWidth(breadth);
  } else {
    setFixedHeight(breadth);
  }
}

QSize ThinScrollBar::sizeHint() const {
  const QSize size = QScrollBar::sizeHint();
  return orientation() == Qt::Vertical ? QSize(breadth, size.height()) : QSize(size.width(), breadth);
}

void ThinScrollBar::paintEvent(QPaintEvent * /*event*/) {
  if (minimum() >= maximum()) {
    return;
  }
  QStyleOptionSlider option;
  initStyleOption(&option);
  const QRectF slider =
      style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
  constexpr qreal across = (breadth - thumbBreadth) / 2.0;
  const QRectF thumb =
      orientation() == Qt::Vertical
          ? QRectF(across, slider.top() + thumbMargin, thumbBreadth, slider.height() - 2 * thumbMargin)
          : QRectF(slider.left() + thumbMargin, across, slider.width() - 2 * thumbMargin, thumbBreadth);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(withOpacity(SemanticColors(palette()).primary,
                               isSliderDown() || underMouse() ? hoveredOpacity : opacity));
  const QRectF aligned = rectOnPixels(painter, thumb);
  const qreal radius = std::min(aligned.width(), aligned.height()) / 2;
  painter.drawRoundedRect(aligned, radius, radius);
}

}  // namespace lumiwren
