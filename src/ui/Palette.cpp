#include "ui/Palette.h"

namespace lumiwren {
namespace {

QColor blend(const QColor &over, const QColor &under, double opacity) {
  const auto mix = [opacity](float a, float b) {
    return static_cast<float>(opacity * double{a} + (1 - opacity) * double{b});
  };
  return QColor::fromRgbF(mix(over.redF(), under.redF()), mix(over.greenF(), under.greenF()),
                          mix(over.blueF(), under.blueF()));
}

}  // namespace

QColor lumiwrenPurple(double opacity) {
  return QColor::fromRgbF(0.55F, 0.35F, 0.85F, static_cast<float>(opacity));
}

QColor withOpacity(QColor color, double opacity) {
  color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
  return color;
}

SemanticColors::SemanticColors(const QPalette &palette)
    : isDark(palette.color(QPalette::Active, QPalette::Window).lightness() < 128),
      primary(palette.color(QPalette::Active, QPalette::WindowText)),
      secondary(),
      windowBackground(palette.color(QPalette::Active, QPalette::Window)),
      textBackground(palette.color(QPalette::Active, QPalette::Base)),
      controlBackground(textBackground),
      separator(withOpacity(primary, 0.14)),
      link(isDark ? QColor(0x6c, 0xb4, 0xff) : QColor(0x0b, 0x5c, 0xc4)),
      selection(palette.color(QPalette::Active, QPalette::Highlight)),
      orange(isDark ? QColor(0xff, 0x9f, 0x2e) : QColor(0xd9, 0x6b, 0x00)) {
  secondary = blend(primary, windowBackground, 0.66);
}

}  // namespace lumiwren
