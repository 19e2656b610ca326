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
  /// Makes what an input method is still composing a part of the text.
  void commitPreedit();

  /// As high as a line of its text; styles would add room for a frame.
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

Q_SIGNALS:
  /// The key to copy was pressed, and nothing is selected here.
  void copyElsewhere();

protected:
  void inputMethodEvent(QInputMethodEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseDoubleClickEvent(QMouseEvent *event) override;
  void focusInEvent(QFocusEvent *event) override;
  void changeEvent(QEvent *event) override;

private:
  void adaptPalette();

  QString preedit_;
  bool hadFocus_ = false;
};

}  // namespace lumiwren
