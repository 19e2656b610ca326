#include "ui/ElidedLabel.h"

#include "ui/PlainToolTip.h"

#include <QPainter>

#include <cmath>

namespace lumiwren {

QString ElidedLabel::line() const {
  return text().replace(QLatin1Char('\n'), QLatin1Char(' '));
}

QSize ElidedLabel::sizeHint() const {
  // A part of a point too little would cost a letter.
  const double width = QFontMetricsF(font()).horizontalAdvance(line());
  return {static_cast<int>(std::ceil(width)), fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const {
  return {0, fontMetrics().height()};
}

bool ElidedLabel::event(QEvent *event) {
  if (event->type() == QEvent::ToolTip) {
    showPlainToolTip(*static_cast<const QHelpEvent *>(event), text(),
                     fontMetrics().horizontalAdvance(line()) > width(), this);
    return true;
  }
  return TextLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent * /*event*/) {
  QPainter painter(this);
  painter.setPen(color());
  const QString shown = line();
  painter.setLayoutDirection(shown.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
  painter.drawText(rect(), static_cast<int>(alignment()) | Qt::TextSingleLine,
                   fontMetrics().elidedText(shown, Qt::ElideRight, width()));
}

}  // namespace lumiwren
