#include "ui/FocusRing.h"

#include "ui/Palette.h"
#include "ui/PixelGrid.h"

namespace lumiwren {
namespace {

constexpr qreal ringCornerRadius = 5;

}  // namespace

bool showsFocus(const QWidget &widget) {
  return widget.hasFocus() && widget.window()->isActiveWindow();
}

void drawFocusRing(QPainter &painter, const QWidget &widget, const QRectF &area) {
  strokeInside(painter, area, focusRingWidth, ringCornerRadius, SemanticColors(widget.palette()).accent);
}

}  // namespace lumiwren
