#pragma once

#include <QPlainTextEdit>
#include <QString>

namespace lumiwren {

/// A field for several lines of plain text. Tab leaves it.
class TextArea : public QPlainTextEdit {
  Q_OBJECT

public:
  /// `name` is what assistive technology calls the field.
  explicit TextArea(const QString &name, QWidget *parent = nullptr);

protected:
  void changeEvent(QEvent *event) override;
  bool event(QEvent *event) override;
  void focusInEvent(QFocusEvent *event) override;
  void focusOutEvent(QFocusEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
};

}  // namespace lumiwren
