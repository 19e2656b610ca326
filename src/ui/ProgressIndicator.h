#pragma once

#include <QTimer>
#include <QWidget>

namespace lumiwren {

/// A small turning wheel. It turns, and wakes the program, only while it can be seen.
class ProgressIndicator : public QWidget {
  Q_OBJECT

public:
  explicit ProgressIndicator(int size, QWidget *parent = nullptr);

protected:
  void paintEvent(QPaintEvent *event) override;
  void showEvent(QShowEvent *event) override;
  void hideEvent(QHideEvent *event) override;

private:
  QTimer timer_;
  int step_ = 0;
};

}  // namespace lumiwren
