#include "ui/AppIconView.h"

#include "ui/AppIcon.h"
#include "ui/Fonts.h"
#include "ui/PixelGrid.h"

#include <QEvent>
#include <QPainter>

namespace lumiwren {

AppIconView::AppIconView(int size, QWidget *parent) : QWidget(parent), size_(size) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize AppIconView::sizeHint() const {
  return {scaledSize(size_), scaledSize(size_)};
}

void AppIconView::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    updateGeometry();
  }
  QWidget::changeEvent(event);
}

void AppIconView::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  drawAppIcon(painter, rectOnPixels(painter, rect()));
}

}  // namespace lumiwren
