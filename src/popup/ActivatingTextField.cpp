#include "popup/ActivatingTextField.h"

#include "popup/KeyablePanel.h"
#include "ui/Fonts.h"
#include "ui/Palette.h"

#include <QEvent>

namespace lumiwren {
namespace {

constexpr int fontSize = 13;

}  // namespace

ActivatingTextField::ActivatingTextField(QWidget *parent) : QLineEdit(parent) {
  setFont(systemFont(fontSize));
  setFrame(false);
  setTextMargins(0, 0, 0, 0);
  tintPlaceholder();
}

void ActivatingTextField::setDisabledWhileBusy(bool disabled) {
  if (disabled == !isEnabled()) {
    return;
  }
  if (disabled) {
    hadFocus_ = window()->focusWidget() == this;
    clearFocus();  // Else the toolkit gives the keyboard to some button.
    setEnabled(false);
  } else {
    setEnabled(true);
    if (hadFocus_ && !window()->focusWidget()) {
      setFocus(Qt::OtherFocusReason);
    }
  }
}

void ActivatingTextField::activate() {
  if (auto *const panel = qobject_cast<KeyablePanel *>(window())) {
    panel->makeKey();
  }
}

void ActivatingTextField::mousePressEvent(QMouseEvent *event) {
  activate();
  QLineEdit::mousePressEvent(event);
}

void ActivatingTextField::mouseDoubleClickEvent(QMouseEvent *event) {
  activate();  // A press soon after another one, whichever window that was in, is no press to the toolkit.
  QLineEdit::mouseDoubleClickEvent(event);
}

void ActivatingTextField::focusInEvent(QFocusEvent *event) {
  activate();
  QLineEdit::focusInEvent(event);
}

void ActivatingTextField::changeEvent(QEvent *event) {
  if (event->type() == QEvent::PaletteChange) {
    tintPlaceholder();
  } else if (event->type() == QEvent::FontChange) {
    setFont(systemFont(fontSize));
  }
  QLineEdit::changeEvent(event);
}

/// Dark palettes may come with the placeholder of a light one.
void ActivatingTextField::tintPlaceholder() {
  const QColor color = SemanticColors(palette()).secondary;
  if (palette().color(QPalette::PlaceholderText) != color) {
    QPalette tinted;
    tinted.setColor(QPalette::PlaceholderText, color);
    setPalette(tinted);
  }
}

}  // namespace lumiwren
