#include "ui/TextLabel.h"

#include <QEvent>
#include <QPainter>

namespace lumiwren {

TextLabel::TextLabel(const QString &text, TextStyle style, SemanticColor color, QWidget *parent)
    : QLabel(parent), style_(style), color_(color) {
  setTextFormat(Qt::PlainText);
  setTextInteractionFlags(Qt::NoTextInteraction);
  setFont(fontOf(style));
  setText(text);
}

void TextLabel::setColor(SemanticColor color) {
  color_ = color;
  update();
}

void TextLabel::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    setFont(fontOf(style_));
    updateGeometry();
  }
  QLabel::changeEvent(event);
}

void TextLabel::paintEvent(QPaintEvent * /*event*/) {
  // The colour of a label is its palette's, from which all of ours are derived.
  QPainter painter(this);
  painter.setPen(color());
  painter.drawText(contentsRect(), static_cast<int>(alignment()) | (wordWrap() ? Qt::TextWordWrap : 0),
                   text());
}

}  // namespace lumiwren
