#include "ui/ButtonLook.h"

#include "ui/Palette.h"

namespace lumiwren {

QColor buttonGround(const QAbstractButton &button) {
  const bool isLit = button.isEnabled() && button.underMouse();
  return withOpacity(SemanticColors(button.palette()).primary, button.isDown() ? 0.16 : isLit ? 0.09 : 0.04);
}

QColor buttonOutline(const QAbstractButton &button) {
  return withOpacity(SemanticColors(button.palette()).primary, 0.2);
}

}  // namespace lumiwren
