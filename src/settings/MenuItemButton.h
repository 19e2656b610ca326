#pragma once

#include "ui/Palette.h"

#include <QAbstractButton>
#include <QString>

#include <optional>

namespace lumiwren {

/// An entry of the menu: a text on the left and, on the right, a key combination or a symbol. It is
/// highlighted while it has the focus, which follows the pointer, so that one entry is highlighted at a time
/// whether it is reached by the mouse or by the keyboard.
class MenuItemButton : public QAbstractButton {
  Q_OBJECT

public:
  explicit MenuItemButton(const QString &label, QWidget *parent = nullptr);

  /// The text is plain; what does not fit ends in an ellipsis.
  void setLabel(const QString &label);
  /// A text at the right end, in lesser weight.
  void setTrailingText(const QString &text);
  struct Symbol {
    QString name;
    int size = 0;  // points
    SemanticColor color = &SemanticColors::primary;
    QString meaning;  // for assistive technology
  };
  /// A symbol at the right end, or none.
  void setTrailingSymbol(std::optional<Symbol> symbol);

  QSize sizeHint() const override;

protected:
  bool event(QEvent *event) override;
  void changeEvent(QEvent *event) override;
  void enterEvent(QEnterEvent *event) override;
  void leaveEvent(QEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  void adaptFont();
  int trailingWidth() const;
  QRect labelArea() const;

  QString trailingText_;
  std::optional<Symbol> symbol_;
};

}  // namespace lumiwren
