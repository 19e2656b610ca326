#pragma once

#include <QColor>
#include <QPalette>

#include <initializer_list>

namespace lumiwren {

/// The program's accent colour.
QColor lumiwrenPurple(double opacity = 1);

QColor withOpacity(QColor color, double opacity);
/// Of the primary colour, for the outline of a box, a sheet and a window without a frame.
inline constexpr double outlineOpacity = 0.16;

/// How well two opaque colours are told apart, from 1 (the same) to 21 (black and white), as WCAG 2 measures
/// it. Text needs 4.5, a symbol 3.
double contrastRatio(const QColor &one, const QColor &other);
/// The colour, made lighter or darker just as far as it takes to have the contrast with each of the
/// backgrounds; its hue stays. Where that cannot be had: the most contrast there is.
QColor withContrast(const QColor &color, std::initializer_list<QColor> backgrounds, double contrast);

/// The colours that views draw with, by what they are for, in the light or dark look of a palette. Main
/// thread. Cheap to make; views ask again at each painting, so that they follow the desktop.
struct SemanticColors {
  explicit SemanticColors(const QPalette &palette);

  bool isDark;
  QColor primary;            // text, and lines in one of its opacities
  QColor secondary;          // text of lesser weight; readable on every background here
  QColor windowBackground;   // also the material of floating windows
  QColor textBackground;     // of what text is typed into
  QColor controlBackground;  // of what stands out from the window
  QColor separator;
  QColor link;  // readable on every background here
  QColor selection;
  QColor orange;      // of warnings; a symbol's, on every background here
  QColor green;       // of success; likewise
  QColor red;         // of failure; likewise
  QColor redText;     // of what destroys something; readable on every background here
  QColor accent;      // lumiwrenPurple for symbols and lines on the window's background
  QColor accentText;  // lumiwrenPurple for text on the window's background

private:
  struct Basis;
  explicit SemanticColors(const Basis &basis);
  static const SemanticColors &derived(const QPalette &palette);
};

/// One of the colours, of whatever palette.
using SemanticColor = QColor SemanticColors::*;

}  // namespace lumiwren
