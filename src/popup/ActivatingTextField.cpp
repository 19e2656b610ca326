#include "popup/ActivatingTextField.h"

#include "popup/KeyablePanel.h"
#include "ui/Fonts.h"
#include "ui/HotkeyPress.h"
#include "ui/Palette.h"

#include <QEvent>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>

#include <utility>

namespace lumiwren {
namespace {

constexpr int followUpFontSize = 13;

}  // namespace

ActivatingTextField::ActivatingTextField(QWidget *parent) : QLineEdit(parent) {
  setFont(systemFont(followUpFontSize));
  setFrame(false);
  setTextMargins(0, 0, 0, 0);
  adaptPalette();
}

void ActivatingTextField::setDisabledWhileBusy(bool disabled) {
  if (disabled == !isEnabled()) {
    return;
  }
  if (disabled) {
    commitPreedit();  // Else the text would be dropped with the focus.
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

QSize ActivatingTextField::sizeHint() const {
  return {QLineEdit::sizeHint().width(), fontMetrics().height()};
}

QSize ActivatingTextField::minimumSizeHint() const {
  return {QLineEdit::minimumSizeHint().width(), fontMetrics().height()};
}

void ActivatingTextField::commitPreedit() {
  if (!preedit_.isEmpty()) {
    QGuiApplication::inputMethod()->commit();
  }
  // Not every input method can be asked.
  if (const QString left = std::exchange(preedit_, {}); !left.isEmpty()) {
    QInputMethodEvent commit;
    commit.setCommitString(left);
    QLineEdit::inputMethodEvent(&commit);
    QGuiApplication::inputMethod()->reset();
  }
}

void ActivatingTextField::inputMethodEvent(QInputMethodEvent *event) {
  preedit_ = event->preeditString();
  QLineEdit::inputMethodEvent(event);
}

void ActivatingTextField::keyPressEvent(QKeyEvent *event) {
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn && !preedit_.isEmpty()) {
    return;  // It ends the composing, and the question is not complete before.
  }
  if (event->matches(QKeySequence::Copy) && !hasSelectedText()) {
    Q_EMIT copyElsewhere();
    return;
  }
  if (isHotkeyPress(*event)) {
    event->ignore();
    return;
  }
  QLineEdit::keyPressEvent(event);
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
    adaptPalette();
  } else if (event->type() == QEvent::FontChange) {
    setFont(systemFont(followUpFontSize));
  }
  QLineEdit::changeEvent(event);
}

void ActivatingTextField::adaptPalette() {
  const auto differs = [this](QPalette::ColorGroup group, QPalette::ColorRole role, const QColor &color) {
    return palette().color(group, role) != color;
  };
  // Dark palettes may come with the placeholder of a light one.
  const SemanticColors colors(palette());
  if (differs(QPalette::Active, QPalette::PlaceholderText, colors.secondary) ||
      differs(QPalette::Disabled, QPalette::Base, colors.textBackground)) {
    QPalette adapted;
    adapted.setColor(QPalette::PlaceholderText, colors.secondary);
    adapted.setColor(QPalette::Disabled, QPalette::PlaceholderText, withOpacity(colors.secondary, 0.6));
    adapted.setColor(QPalette::Disabled, QPalette::Base, colors.textBackground);
    setPalette(adapted);
  }
}

}  // namespace lumiwren
