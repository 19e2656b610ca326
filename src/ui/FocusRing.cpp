#include "ui/FocusRing.h"

#include "ui/Palette.h"
#include "ui/PixelGrid.h"

namespace lumiwren {
namespace {

constexpr qreal cornerRadius = 5;

}  // namespace

bool showsFocus(const QWidget &widget) {
  return widget.hasFocus() && widget.window()->isActiveWindow();
}

void drawFocusRing(QPainter &painter, const QWidget &widget, const QRectF &area) {
  strokeInside(painter, area, focusRingWidth, cornerRadius, SemanticColors(widget.palette()).accent);
}

}  // namespace lumiwren
