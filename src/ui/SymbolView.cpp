#include "ui/SymbolView.h"

#include "ui/Fonts.h"
#include "ui/Symbols.h"

#include <QEvent>
#include <QPainter>

#include <utility>

namespace lumiwren {

SymbolView::SymbolView(QString symbolName, int size, SemanticColor color, QWidget *parent)
    : QWidget(parent), symbolName_(std::move(symbolName)), size_(size), color_(color) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SymbolView::setSymbol(const QString &symbolName, SemanticColor color) {
  symbolName_ = symbolName;
  color_ = color;
  update();
}

QSize SymbolView::sizeHint() const {
  return {scaledSize(size_), scaledSize(size_)};
}

void SymbolView::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    updateGeometry();
  }
  QWidget::changeEvent(event);
}

void SymbolView::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  drawSymbol(painter, symbolName_, QRectF(rect()).center(), scaledSize(size_),
             SemanticColors(palette()).*color_);
}

}  // namespace lumiwren
