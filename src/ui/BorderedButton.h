#pragma once

#include <QPushButton>
#include <QString>
#include <QVariantAnimation>

namespace lumiwren {

enum class LabelChange { AtOnce, CrossFade };

/// A small bordered button with a symbol before its text. Never takes the keyboard focus by a click.
class BorderedButton : public QPushButton {
  Q_OBJECT

public:
  explicit BorderedButton(QWidget *parent = nullptr);

  /// The text is the new one at once, for whoever asks. A cross-fade shows one label turn into the other, the
  /// button's width with it, unless the user wants no motion.
  void setLabel(const QString &symbolName, const QString &text, LabelChange change = LabelChange::AtOnce);

  QSize sizeHint() const override;

protected:
  void changeEvent(QEvent *event) override;
  void hideEvent(QHideEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  int widthWith(const QString &text) const;
  void drawLabel(QPainter &painter, const QString &symbolName, const QString &text,
                 const QColor &color) const;

  QString symbolName_;
  // The label that fades away.
  QString oldSymbolName_;
  QString oldText_;
  QVariantAnimation fading_;  // from 0, the old label, to 1
};

}  // namespace lumiwren
