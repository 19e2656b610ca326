#pragma once

#include "ui/Palette.h"
#include "ui/TextStyle.h"

#include <QLabel>
#include <QString>

namespace lumiwren {

/// A text of a window: never markup, never a mnemonic. On one line unless setWordWrap(true).
class TextLabel : public QLabel {
  Q_OBJECT

public:
  TextLabel(const QString &text, TextStyle style, SemanticColor color = &SemanticColors::primary,
            QWidget *parent = nullptr);

  void setColor(SemanticColor color);

protected:
  QColor color() const { return SemanticColors(palette()).*color_; }

  void changeEvent(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  const TextStyle style_;
  SemanticColor color_;
};

}  // namespace lumiwren
