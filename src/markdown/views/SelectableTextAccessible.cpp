#include "markdown/views/SelectableTextAccessible.h"

#include "markdown/views/SelectableTextView.h"

namespace lumiwren {
namespace {

QAccessibleInterface *make(const QString & /*className*/, QObject *object) {
  auto *const view = qobject_cast<SelectableTextView *>(object);
  return view ? new SelectableTextAccessible(view) : nullptr;
}

}  // namespace

SelectableTextAccessible::SelectableTextAccessible(SelectableTextView *view)
    : QAccessibleWidget(view, QAccessible::StaticText) {}

void SelectableTextAccessible::install() {
  QAccessible::installFactory(&make);  // A factory that is there is not installed again.
}

SelectableTextView &SelectableTextAccessible::view() const {
  return *static_cast<SelectableTextView *>(object());
}

void *SelectableTextAccessible::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface *>(this)
                                            : QAccessibleWidget::interface_cast(type);
}

QAccessible::State SelectableTextAccessible::state() const {
  auto state = QAccessibleWidget::state();
  state.readOnly = true;
  state.multiLine = true;
  state.selectableText = true;
  return state;
}

void SelectableTextAccessible::selection(int /*index*/, int *start, int *end) const {
  *start = view().selectionStart();
  *end = view().selectionEnd();
}

int SelectableTextAccessible::selectionCount() const {
  return view().selectionStart() < view().selectionEnd() ? 1 : 0;
}

void SelectableTextAccessible::addSelection(int start, int end) {
  view().setSelection(start, end);
}

void SelectableTextAccessible::removeSelection(int /*index*/) {
  view().setSelection(0, 0);
}

void SelectableTextAccessible::setSelection(int /*index*/, int start, int end) {
  view().setSelection(start, end);
}

int SelectableTextAccessible::cursorPosition() const {
  return view().selectionEnd();
}

void SelectableTextAccessible::setCursorPosition(int position) {
  view().setSelection(position, position);
}

QString SelectableTextAccessible::text(int start, int end) const {
  return view().plainText().mid(start, end - start);
}

int SelectableTextAccessible::characterCount() const {
  return view().length();
}

QRect SelectableTextAccessible::characterRect(int offset) const {
  const QRect rect = view().characterRect(offset);
  return {view().mapToGlobal(rect.topLeft()), rect.size()};
}

int SelectableTextAccessible::offsetAtPoint(const QPoint &point) const {
  return view().positionAt(view().mapFromGlobal(point));
}

void SelectableTextAccessible::scrollToSubstring(int /*start*/, int /*end*/) {
  // The whole answer is one text to its scroll area; there is nothing inside it to scroll to.
}

QString SelectableTextAccessible::attributes(int /*offset*/, int *start, int *end) const {
  *start = 0;
  *end = characterCount();
  return {};
}

}  // namespace lumiwren
