#pragma once

#include <QAccessible>
#include <QAccessibleWidget>
#include <QString>

namespace lumiwren {

class SelectableTextView;

/// What assistive technology sees of an answer: one text, read-only, with its selection. Made only when it
/// is asked for.
class SelectableTextAccessible : public QAccessibleWidget, public QAccessibleTextInterface {
public:
  explicit SelectableTextAccessible(SelectableTextView *view);

  /// Makes answers known to the toolkit; once, however often it is called.
  static void install();

  void *interface_cast(QAccessible::InterfaceType type) override;
  QAccessible::State state() const override;

  void selection(int index, int *start, int *end) const override;
  int selectionCount() const override;
  void addSelection(int start, int end) override;
  void removeSelection(int index) override;
  void setSelection(int index, int start, int end) override;
  int cursorPosition() const override;
  void setCursorPosition(int position) override;
  QString text(int start, int end) const override;
  using QAccessibleWidget::text;
  int characterCount() const override;
  QRect characterRect(int offset) const override;
  int offsetAtPoint(const QPoint &point) const override;
  void scrollToSubstring(int start, int end) override;
  QString attributes(int offset, int *start, int *end) const override;

private:
  SelectableTextView &view() const;
};

}  // namespace lumiwren
