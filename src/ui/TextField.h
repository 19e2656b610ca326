#pragma once

#include <QLineEdit>
#include <QString>

namespace lumiwren {

/// A field for one line of text, of one look on every desktop.
class TextField : public QLineEdit {
  Q_OBJECT

public:
  enum class Face { System, Monospaced };

  /// `name` is what assistive technology calls the field.
  explicit TextField(const QString &name, Face face = Face::System, QWidget *parent = nullptr);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  void changeEvent(QEvent *event) override;
  void inputMethodEvent(QInputMethodEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;

private:
  void adaptFont();

  const Face face_;
  bool isComposing_ = false;
};

}  // namespace lumiwren
