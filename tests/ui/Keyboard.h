#pragma once

#include <QCoreApplication>
#include <QKeyEvent>
#include <QString>
#include <QWidget>

namespace lumiwren::testing {

/// A key pressed and let go in a widget that has the keyboard.
inline void pressKey(QWidget &widget, int key, const QString &text = {},
                     Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, modifiers, text);
    QCoreApplication::sendEvent(&widget, &event);
  }
}

inline void typeText(QWidget &widget, const QString &text) {
  for (const QChar character : text) {
    pressKey(widget, 0, character);
  }
}

}  // namespace lumiwren::testing
