#pragma once

#include <QColor>
#include <QPalette>

namespace lumiwren {

/// The program's accent colour.
QColor lumiwrenPurple(double opacity = 1);

QColor withOpacity(QColor color, double opacity);

/// The colours that views draw with, by what they are for, in the light or dark look of a palette. Cheap to
/// make; views ask again at each painting, so that they follow the desktop.
struct SemanticColors {
  explicit SemanticColors(const QPalette &palette);

  bool isDark;
  QColor primary;            // text, and lines in one of its opacities
  QColor secondary;          // text of lesser weight; readable on every background here
  QColor windowBackground;   // also the material of floating windows
  QColor textBackground;     // of what text is typed into
  QColor controlBackground;  // of what stands out from the window
  QColor separator;
  QColor link;
  QColor selection;
  QColor orange;  // of warnings
};

}  // namespace lumiwren
