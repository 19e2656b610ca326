#pragma once

#include <QEvent>
#include <QObject>
#include <QWidget>

#include <cstddef>

namespace lumiwren::testing {

/// Counts how often a widget is drawn.
class PaintCounter : public QObject {
public:
  explicit PaintCounter(QWidget &widget) { widget.installEventFilter(this); }
  bool eventFilter(QObject * /*watched*/, QEvent *event) override {
    count += event->type() == QEvent::Paint ? 1 : 0;
    return false;
  }
  std::size_t count = 0;
};

}  // namespace lumiwren::testing
