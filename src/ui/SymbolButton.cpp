#include "ui/SymbolButton.h"

#include "ui/Symbols.h"

#include <QPainter>

#include <utility>

namespace lumiwren {

SymbolButton::SymbolButton(QString symbolName, int size, const QString &name, Color color, QWidget *parent)
    : QPushButton(parent), symbolName_(std::move(symbolName)), size_(size), color_(std::move(color)) {
  setAccessibleName(name);
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize SymbolButton::sizeHint() const {
  return {size_ + 4, size_ + 4};
}

void SymbolButton::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  auto color = color_(SemanticColors(palette()));
  if (isEnabled() && isDown()) {
    color = withOpacity(color, 0.6);
  } else if (isEnabled() && !underMouse()) {
    color = withOpacity(color, 0.88);
  }
  const QPoint corner((width() - size_) / 2, (height() - size_) / 2);
  painter.drawPixmap(corner, symbol(symbolName_, size_, color, devicePixelRatioF()));
  if (hasFocus() && window()->isActiveWindow()) {
    painter.setPen(QPen(lumiwrenPurple(), 1.5));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 5, 5);
  }
}

}  // namespace lumiwren
