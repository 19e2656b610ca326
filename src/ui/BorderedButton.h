#pragma once

#include <QPushButton>
#include <QString>

namespace lumiwren {

/// A small bordered button with a symbol before its text. Never takes the keyboard focus by a click.
class BorderedButton : public QPushButton {
  Q_OBJECT

public:
  explicit BorderedButton(QWidget *parent = nullptr);

  void setLabel(const QString &symbolName, const QString &text);

  QSize sizeHint() const override;

protected:
  void paintEvent(QPaintEvent *event) override;

private:
  QString symbolName_;
};

}  // namespace lumiwren
