#include "ui/SymbolButton.h"

#include "ui/FocusRing.h"
#include "ui/Fonts.h"
#include "ui/PixelGrid.h"
#include "ui/Symbols.h"

#include <QEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace lumiwren {
namespace {

constexpr int symbolMargin = 2;
constexpr double pressedOpacity = 0.6;
constexpr double hoverOpacity = 0.1;

}  // namespace

SymbolButton::SymbolButton(QString symbolName, int size, const QString &name, Color color, QWidget *parent)
    : QPushButton(parent), symbolName_(std::move(symbolName)), size_(size), color_(std::move(color)) {
  setAccessibleName(name);
  setFocusPolicy(Qt::TabFocus);
  setAutoDefault(false);  // A dialog would take it for its default button.
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SymbolButton::setSymbol(const QString &symbolName, const QString &name) {
  symbolName_ = symbolName;
  setAccessibleName(name);
  update();
}

QSize SymbolButton::sizeHint() const {
  const int side = scaledSize(size_) + 2 * symbolMargin;
  return {side, side};
}

void SymbolButton::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    updateGeometry();
  }
  QPushButton::changeEvent(event);
}

void SymbolButton::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const SemanticColors colors(palette());
  const QRectF area = rect();
  if (isEnabled() && underMouse()) {
    const qreal diameter = std::min(area.width(), area.height());
    QRectF disc(0, 0, diameter, diameter);
    disc.moveCenter(area.center());
    painter.setPen(Qt::NoPen);
    painter.setBrush(withOpacity(colors.primary, hoverOpacity));
    painter.drawEllipse(rectOnPixels(painter, disc));
  }
  const QColor color = color_(colors);
  drawSymbol(painter, symbolName_, area.center(), scaledSize(size_),
             isDown() ? withOpacity(color, pressedOpacity) : color);
  if (showsFocus(*this)) {
    drawFocusRing(painter, *this, area);
  }
}

}  // namespace lumiwren
