#pragma once

#include "ui/Palette.h"

#include <QString>
#include <QWidget>

namespace lumiwren {

/// A symbol that stands in a window, `size` points square; it grows with the text. It says nothing that a
/// text beside it does not say.
class SymbolView : public QWidget {
  Q_OBJECT

public:
  SymbolView(QString symbolName, int size, SemanticColor color, QWidget *parent = nullptr);

  void setSymbol(const QString &symbolName, SemanticColor color);

  QSize sizeHint() const override;

protected:
  void changeEvent(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  QString symbolName_;
  const int size_;
  SemanticColor color_;
};

}  // namespace lumiwren
