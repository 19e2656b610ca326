#include "ui/Palette.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace lumiwren {
namespace {

constexpr double textContrast = 4.5;
constexpr double symbolContrast = 3;

QColor blend(const QColor &over, const QColor &under, double opacity) {
  const auto mix = [opacity](float a, float b) {
    return static_cast<float>(opacity * double{a} + (1 - opacity) * double{b});
  };
  return QColor::fromRgbF(mix(over.redF(), under.redF()), mix(over.greenF(), under.greenF()),
                          mix(over.blueF(), under.blueF()));
}

/// The power 2.4 of a number from 0.09 to 1, by way of its fifth root. The mathematics library's pow() brings
/// a quarter of a megabyte of tables into the memory of an idle program.
double power24(double number) {
  double root = 1;
  for (int round = 0; round < 8; ++round) {  // doubles the digits, at the latest from the fourth one on
    const double fourth = root * root * root * root;
    root -= (fourth * root - number) / (5 * fourth);
  }
  return number * number * root * root;
}

/// WCAG 2's relative luminance.
double luminance(const QColor &color) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : power24((part + 0.055) / 1.055);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double leastContrast(const QColor &color, std::initializer_list<QColor> backgrounds) {
  double least = 21;
  for (const QColor &background : backgrounds) {
    least = std::min(least, contrastRatio(color, background));
  }
  return least;
}

/// In the 8 bits a channel that are painted.
QColor withLightness(const QColor &color, float lightness) {
  return QColor(QColor::fromHslF(color.hslHueF(), color.hslSaturationF(), lightness).rgb());
}

}  // namespace

QColor lumiwrenPurple(double opacity) {
  return QColor::fromRgbF(0.55F, 0.35F, 0.85F, static_cast<float>(opacity));
}

QColor withOpacity(QColor color, double opacity) {
  color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
  return color;
}

double contrastRatio(const QColor &one, const QColor &other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

QColor withContrast(const QColor &color, std::initializer_list<QColor> backgrounds, double contrast) {
  constexpr int steps = 256;
  if (leastContrast(color, backgrounds) >= contrast) {
    return color;
  }
  // Step by step outwards, as there may be something between two backgrounds, and nothing beyond them.
  QColor best = color;
  double bestContrast = 0;
  for (int step = 1; step <= steps; ++step) {
    for (const int direction : {1, -1}) {
      const float lightness = color.lightnessF() + static_cast<float>(direction * step) / steps;
      if (lightness < -1.0F / steps || lightness > 1 + 1.0F / steps) {
        continue;
      }
      const QColor candidate = withLightness(color, std::clamp(lightness, 0.0F, 1.0F));
      const double candidateContrast = leastContrast(candidate, backgrounds);
      if (candidateContrast >= contrast) {
        return candidate;
      }
      if (candidateContrast > bestContrast) {
        best = candidate;
        bestContrast = candidateContrast;
      }
    }
  }
  return best;
}

struct SemanticColors::Basis {
  explicit Basis(const QPalette &palette)
      : text(palette.color(QPalette::Active, QPalette::WindowText)),
        window(palette.color(QPalette::Active, QPalette::Window)),
        base(palette.color(QPalette::Active, QPalette::Base)),
        highlight(palette.color(QPalette::Active, QPalette::Highlight)) {}

  QColor text;
  QColor window;
  QColor base;
  QColor highlight;

  friend bool operator==(const Basis &, const Basis &) = default;
};

SemanticColors::SemanticColors(const QPalette &palette) : SemanticColors(derived(palette)) {}

const SemanticColors &SemanticColors::derived(const QPalette &palette) {
  // All widgets paint with much the same palette, one after the other.
  static std::optional<std::pair<Basis, SemanticColors>> last;
  const Basis basis(palette);
  if (!last || last->first != basis) {
    last.emplace(basis, SemanticColors(basis));
  }
  return last->second;
}

SemanticColors::SemanticColors(const Basis &basis)
    : isDark(luminance(basis.window) < luminance(basis.text)),
      primary(basis.text),
      windowBackground(basis.window),
      textBackground(basis.base),
      controlBackground(basis.base),
      separator(withOpacity(primary, 0.14)),
      selection(basis.highlight) {
  const auto onAll = [this](const QColor &color, double contrast) {
    return withContrast(color, {windowBackground, textBackground, controlBackground}, contrast);
  };
  secondary = onAll(blend(primary, windowBackground, 0.66), textContrast);
  link = onAll(isDark ? QColor(0x6c, 0xb4, 0xff) : QColor(0x0b, 0x5c, 0xc4), textContrast);
  orange = onAll(isDark ? QColor(0xff, 0x9f, 0x2e) : QColor(0xd9, 0x6b, 0x00), symbolContrast);
  green = onAll(isDark ? QColor(0x35, 0xc7, 0x59) : QColor(0x1f, 0x98, 0x3f), symbolContrast);
  const QColor plainRed = isDark ? QColor(0xff, 0x5a, 0x50) : QColor(0xd7, 0x26, 0x1e);
  red = onAll(plainRed, symbolContrast);
  redText = onAll(plainRed, textContrast);
  accent = withContrast(lumiwrenPurple(), {windowBackground}, symbolContrast);
  accentText = withContrast(lumiwrenPurple(), {windowBackground}, textContrast);
}

}  // namespace lumiwren
