#pragma once

#include <QWidget>

namespace lumiwren {

/// The program's icon, `size` points square; it grows with the text.
class AppIconView : public QWidget {
  Q_OBJECT

public:
  explicit AppIconView(int size, QWidget *parent = nullptr);

  QSize sizeHint() const override;

protected:
  void changeEvent(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  const int size_;
};

}  // namespace lumiwren
