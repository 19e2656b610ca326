#include "ui/Palette.h"

#include <gtest/gtest.h>

#include <cmath>

namespace lumiwren {
namespace {

QPalette palette(const QColor &window, const QColor &text, const QColor &base) {
  QPalette result;
  result.setColor(QPalette::Window, window);
  result.setColor(QPalette::WindowText, text);
  result.setColor(QPalette::Base, base);
  return result;
}

const QPalette light = palette(QColor(0xef, 0xef, 0xef), Qt::black, Qt::white);
const QPalette dark = palette(QColor(0x2b, 0x2b, 0x2e), QColor(0xee, 0xee, 0xee), QColor(0x1e, 0x1e, 0x20));

double luminance(const QColor &color) {
  const auto linear = [](double part) {
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &one, const QColor &other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

TEST(Palette, TheAccentColourIsLumiwrenPurple) {
  const QColor purple = lumiwrenPurple();
  EXPECT_NEAR(purple.redF(), 0.55, 0.001);
  EXPECT_NEAR(purple.greenF(), 0.35, 0.001);
  EXPECT_NEAR(purple.blueF(), 0.85, 0.001);
  EXPECT_NEAR(purple.alphaF(), 1, 0.001);
  EXPECT_NEAR(lumiwrenPurple(0.2).alphaF(), 0.2, 0.001);
}

TEST(Palette, TellsDarkFromLight) {
  EXPECT_FALSE(SemanticColors(light).isDark);
  EXPECT_TRUE(SemanticColors(dark).isDark);
}

TEST(Palette, TextIsReadableOnEveryBackgroundInBothLooks) {
  for (const auto &look : {light, dark}) {
    const SemanticColors colors(look);
    for (const auto &background :
         {colors.windowBackground, colors.textBackground, colors.controlBackground}) {
      EXPECT_GE(contrast(colors.primary, background), 7);
      EXPECT_GE(contrast(colors.secondary, background), 4.5);
      EXPECT_GE(contrast(colors.link, background), 4.5);
    }
    EXPECT_GE(contrast(colors.orange, colors.windowBackground), 3);
    EXPECT_GE(contrast(lumiwrenPurple(), colors.windowBackground), 2.5);
  }
}

}  // namespace
}  // namespace lumiwren
