#pragma once

#include <QWidget>

namespace lumiwren {

/// A hairline from side to side.
class Divider : public QWidget {
  Q_OBJECT

public:
  explicit Divider(QWidget *parent = nullptr);

protected:
  void paintEvent(QPaintEvent *event) override;
};

}  // namespace lumiwren
