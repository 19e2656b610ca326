#pragma once

#include "ui/Palette.h"

#include <QPushButton>
#include <QString>

#include <functional>

namespace lumiwren {

/// A plain button that is a symbol and nothing else: in its full colour, faint while it is pressed, before a
/// faint disc while the pointer is over it. Never takes the keyboard focus by a click.
class SymbolButton : public QPushButton {
  Q_OBJECT

public:
  using Color = std::function<QColor(const SemanticColors &)>;

  /// `size` is in points and grows with the text. `name` is what assistive technology calls the button.
  SymbolButton(QString symbolName, int size, const QString &name, Color color, QWidget *parent = nullptr);

  void setSymbol(const QString &symbolName, const QString &name);

  QSize sizeHint() const override;

protected:
  void changeEvent(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  QString symbolName_;
  const int size_;
  const Color color_;
};

}  // namespace lumiwren
