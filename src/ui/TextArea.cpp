#include "ui/TextArea.h"

#include "ui/FieldLook.h"
#include "ui/HotkeyPress.h"
#include "ui/TextStyle.h"
#include "ui/ThinScrollBar.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>

namespace lumiwren {
namespace {

// Of the frame, in which nothing is drawn over the focus ring; the document has a margin of its own.
constexpr int areaHorizontalPadding = 4;
constexpr int verticalPadding = 3;

}  // namespace

TextArea::TextArea(const QString &name, QWidget *parent) : QPlainTextEdit(parent) {
  setAccessibleName(name);
  setFrameShape(QFrame::NoFrame);
  setViewportMargins(areaHorizontalPadding, verticalPadding, 0, verticalPadding);
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

void TextArea::keyPressEvent(QKeyEvent *event) {
  if (isHotkeyPress(*event)) {
    event->ignore();
  } else {
    QPlainTextEdit::keyPressEvent(event);
  }
}

}  // namespace lumiwren
