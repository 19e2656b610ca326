#include "ui/HotkeyPress.h"

#include <QKeyEvent>

namespace lumiwren {

bool isHotkeyPress(const QKeyEvent &event) {
  const QString text = event.text();
  return (event.modifiers() & (Qt::AltModifier | Qt::MetaModifier)) != 0 && !text.isEmpty() &&
         text.front().isPrint();
}

}  // namespace lumiwren
