#include "settings/FormView.h"

#include "ui/Fonts.h"

#include <QEvent>

namespace lumiwren {

FormView::FormView(int width, QWidget *parent) : QWidget(parent), width_(width) {
  setFixedWidth(scaledSize(width_));
}

void FormView::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    setFixedWidth(scaledSize(width_));
  }
  QWidget::changeEvent(event);
}

}  // namespace lumiwren
