#pragma once

#include <QScrollBar>

namespace lumiwren {

/// A vertical scroll bar that is a thin bar and nothing else, and invisible while there is nothing to scroll.
class ThinScrollBar : public QScrollBar {
  Q_OBJECT

public:
  explicit ThinScrollBar(QWidget *parent = nullptr);

  QSize sizeHint() const override;

protected:
  void paintEvent(QPaintEvent *event) override;
};

}  // namespace lumiwren
