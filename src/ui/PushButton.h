#pragma once

#include <QPushButton>
#include <QString>

namespace lumiwren {

class ProgressIndicator;

/// A button with a text, of one look on every desktop. Reached by Tab, pressed by Space, and by Return where
/// it is the default of its dialog; never takes the keyboard focus by a click.
class PushButton : public QPushButton {
  Q_OBJECT

public:
  enum class Kind {
    Bordered,
    Prominent,    // filled with lumiwrenPurple: what the window is for
    Destructive,  // its text is red
    Link,         // a text in the colour of links, in the caption's size
  };

  PushButton(Kind kind, const QString &label, QWidget *parent = nullptr);

  /// The text, which is also the accessible name; an ampersand in it is just that.
  void setLabel(const QString &label);
  /// A symbol before the text.
  void setSymbol(const QString &symbolName);
  /// A turning wheel in the place of the text; the button keeps its size.
  void setBusy(bool busy);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

protected:
  void changeEvent(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;

private:
  QFont labelFont() const;
  void adaptFont();
  void placeWheel();
  void drawBody(QPainter &painter);
  void drawLabel(QPainter &painter, const QColor &color);

  const Kind kind_;
  QString symbolName_;
  ProgressIndicator *wheel_ = nullptr;  // while the button is busy
};

}  // namespace lumiwren
