#include "ui/SecureFieldAccessible.h"

#include "ui/SecureField.h"

namespace lumiwren {
namespace {

QAccessibleInterface *make(const QString & /*className*/, QObject *object) {
  auto *const field = qobject_cast<SecureField *>(object);
  return field != nullptr ? new SecureFieldAccessible(field) : nullptr;
}

}  // namespace

SecureFieldAccessible::SecureFieldAccessible(SecureField *field)
    : QAccessibleWidget(field, QAccessible::EditableText) {}

void SecureFieldAccessible::install() {
  QAccessible::installFactory(&make);  // A factory that is there is not installed again.
}

SecureField &SecureFieldAccessible::field() const {
  return *static_cast<SecureField *>(object());
}

void *SecureFieldAccessible::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::TextInterface && !field().isMasked()
             ? static_cast<QAccessibleTextInterface *>(this)
             : QAccessibleWidget::interface_cast(type);
}

QAccessible::State SecureFieldAccessible::state() const {
  auto state = QAccessibleWidget::state();
  state.editable = true;
  state.passwordEdit = field().isMasked();
  state.selectableText = !field().isMasked();
  return state;
}

QString SecureFieldAccessible::text(QAccessible::Text kind) const {
  if (kind == QAccessible::Value) {
    return field().isMasked() ? QString() : field().text();
  }
  return QAccessibleWidget::text(kind);
}

void SecureFieldAccessible::selection(int /*index*/, int *start, int *end) const {
  *start = field().hasSelectedText() ? field().selectionStart() : 0;
  *end = field().hasSelectedText() ? field().selectionEnd() : 0;
}

int SecureFieldAccessible::selectionCount() const {
  return field().hasSelectedText() ? 1 : 0;
}

void SecureFieldAccessible::addSelection(int start, int end) {
  field().setSelection(start, end - start);
}

void SecureFieldAccessible::removeSelection(int /*index*/) {
  field().deselect();
}

void SecureFieldAccessible::setSelection(int /*index*/, int start, int end) {
  field().setSelection(start, end - start);
}

int SecureFieldAccessible::cursorPosition() const {
  return field().cursorPosition();
}

void SecureFieldAccessible::setCursorPosition(int position) {
  field().setCursorPosition(position);
}

QString SecureFieldAccessible::text(int start, int end) const {
  return field().isMasked() ? QString() : field().text().mid(start, end - start);
}

int SecureFieldAccessible::characterCount() const {
  return field().isMasked() ? 0 : static_cast<int>(field().text().size());
}

QRect SecureFieldAccessible::characterRect(int /*offset*/) const {
  return rect();  // Of single characters the toolkit's field does not tell the place.
}

int SecureFieldAccessible::offsetAtPoint(const QPoint &point) const {
  return field().cursorPositionAt(field().mapFromGlobal(point));
}

void SecureFieldAccessible::scrollToSubstring(int start, int /*end*/) {
  field().setCursorPosition(start);
}

QString SecureFieldAccessible::attributes(int /*offset*/, int *start, int *end) const {
  *start = 0;
  *end = characterCount();
  return {};
}

}  // namespace lumiwren
