#pragma once

#include <QAccessible>
#include <QAccessibleWidget>
#include <QString>

namespace lumiwren {

class SecureField;

/// What assistive technology sees of a field for a secret: its text while it is shown, and a field without a
/// text while it is masked. Of the toolkit's own password fields every key that is typed is told to whoever
/// listens; what has no text is left out of that.
class SecureFieldAccessible : public QAccessibleWidget, public QAccessibleTextInterface {
public:
  explicit SecureFieldAccessible(SecureField *field);

  /// Makes the fields known to the toolkit; once, however often it is called.
  static void install();

  void *interface_cast(QAccessible::InterfaceType type) override;
  QAccessible::State state() const override;
  QString text(QAccessible::Text kind) const override;

  void selection(int index, int *start, int *end) const override;
  int selectionCount() const override;
  void addSelection(int start, int end) override;
  void removeSelection(int index) override;
  void setSelection(int index, int start, int end) override;
  int cursorPosition() const override;
  void setCursorPosition(int position) override;
  QString text(int start, int end) const override;
  int characterCount() const override;
  QRect characterRect(int offset) const override;
  int offsetAtPoint(const QPoint &point) const override;
  void scrollToSubstring(int start, int end) override;
  QString attributes(int offset, int *start, int *end) const override;

private:
  SecureField &field() const;
};

}  // namespace lumiwren
