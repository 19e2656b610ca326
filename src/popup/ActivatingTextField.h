#pragma once

#include <QLineEdit>

namespace lumiwren {

/// The single-line field for follow-up questions. Its special duty: a click into it is what lets its
/// KeyablePanel have the keyboard.
class ActivatingTextField : public QLineEdit {
  Q_OBJECT

public:
  explicit ActivatingTextField(QWidget *parent = nullptr);

  /// A field that had the keyboard when it was disabled has it again when it is enabled.
  void setDisabledWhileBusy(bool disabled);
  /// Takes the keyboard, as a click into the field does.
  void activate();

protected:
  void mousePressEvent(QMouseEvent *event) override;
  void mouseDoubleClickEvent(QMouseEvent *event) override;
  void focusInEvent(QFocusEvent *event) override;
  void changeEvent(QEvent *event) override;

private:
  void tintPlaceholder();

  bool hadFocus_ = false;
};

}  // namespace lumiwren
