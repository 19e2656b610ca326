#pragma once

#include "ui/Palette.h"

#include <QPushButton>
#include <QString>

#include <functional>

namespace lumiwren {

/// A plain button that is a symbol and nothing else. Never takes the keyboard focus by a click.
class SymbolButton : public QPushButton {
  Q_OBJECT

public:
  using Color = std::function<QColor(const SemanticColors &)>;

  /// `name` is what assistive technology calls the button.
  SymbolButton(QString symbolName, int size, const QString &name, Color color, QWidget *parent = nullptr);

  QSize sizeHint() const override;

protected:
  void paintEvent(QPaintEvent *event) override;

private:
  const QString symbolName_;
  const int size_;
  const Color color_;
};

}  // namespace lumiwren
