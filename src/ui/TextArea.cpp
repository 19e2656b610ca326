#include "ui/TextArea.h"

#include "ui/FieldLook.h"
#include "ui/TextStyle.h"
#include "ui/ThinScrollBar.h"

#include <QEvent>
#include <QPainter>

namespace lumiwren {
namespace {

constexpr int horizontalPadding = 4;  // beside the document's own margin of as much
constexpr int verticalPadding = 3;
constexpr int edge = 2;  // the focus ring's, over which nothing may be drawn

}  // namespace

TextArea::TextArea(const QString &name, QWidget *parent) : QPlainTextEdit(parent) {
  setAccessibleName(name);
  setFrameShape(QFrame::NoFrame);
  setContentsMargins(edge, edge, edge, edge);
  setViewportMargins(horizontalPadding - edge, verticalPadding - edge, 0, verticalPadding - edge);
  viewport()->setAutoFillBackground(false);
  setVerticalScrollBar(new ThinScrollBar);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setTabChangesFocus(true);
  setFont(fontOf(TextStyle::Body));
  adaptFieldPalette(*this);
}

void TextArea::changeEvent(QEvent *event) {
  if (event->type() == QEvent::PaletteChange) {
    adaptFieldPalette(*this);
  } else if (event->type() == QEvent::FontChange) {
    setFont(fontOf(TextStyle::Body));
  }
  QPlainTextEdit::changeEvent(event);
}

bool TextArea::event(QEvent *event) {
  if (event->type() == QEvent::Paint) {
    QPainter painter(this);
    drawFieldPanel(painter, *this);
    return true;
  }
  return QPlainTextEdit::event(event);
}

void TextArea::focusInEvent(QFocusEvent *event) {
  QPlainTextEdit::focusInEvent(event);
  update();
}

void TextArea::focusOutEvent(QFocusEvent *event) {
  QPlainTextEdit::focusOutEvent(event);
  update();
}

}  // namespace lumiwren
