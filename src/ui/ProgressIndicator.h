#pragma once

#include "base/Handle.h"

#include <QTimer>
#include <QWidget>

namespace lumiwren {

/// A small turning wheel. It turns, and wakes the program, only while it can be seen; it stands still where
/// the user wants no motion. Assistive technology knows it as a busy progress bar named "Loading".
class ProgressIndicator : public QWidget {
  Q_OBJECT

public:
  /// The wheel takes a square of `size` points, which grows with the text, and is drawn at 0.8 of that about
  /// its centre.
  explicit ProgressIndicator(int size, QWidget *parent = nullptr);

protected:
  void changeEvent(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;
  void showEvent(QShowEvent *event) override;
  void hideEvent(QHideEvent *event) override;

private:
  void updateTurning();

  const int size_;
  QTimer timer_{this};
  int step_ = 0;
  Handle motion_;
};

}  // namespace lumiwren
