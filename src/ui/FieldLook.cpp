#include "ui/FieldLook.h"

#include "ui/FocusRing.h"
#include "ui/Palette.h"
#include "ui/PixelGrid.h"
#include "ui/Spacing.h"

namespace lumiwren {

void drawFieldPanel(QPainter &painter, const QWidget &field) {
  const SemanticColors colors(field.palette());
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(colors.textBackground);
  painter.drawRoundedRect(rectOnPixels(painter, field.rect()), radius::control, radius::control);
  if (showsFocus(field)) {
    drawFocusRing(painter, field, field.rect());
  } else {
    strokeInside(painter, field.rect(), 1, radius::control - 0.5, withOpacity(colors.primary, 0.25));
  }
}

void adaptFieldPalette(QWidget &field) {
  const SemanticColors colors(field.palette());
  QPalette adapted = field.palette();
  adapted.setColor(QPalette::PlaceholderText, colors.secondary);
  adapted.setColor(QPalette::Disabled, QPalette::PlaceholderText, withOpacity(colors.secondary, 0.6));
  adapted.setColor(QPalette::Disabled, QPalette::Base, colors.textBackground);
  if (adapted != field.palette()) {
    // Only what differs is set, so that the rest keeps following the desktop.
    QPalette own;
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
      own.setColor(group, QPalette::PlaceholderText, adapted.color(group, QPalette::PlaceholderText));
    }
    own.setColor(QPalette::Disabled, QPalette::Base, colors.textBackground);
    field.setPalette(own);
  }
}

}  // namespace lumiwren
