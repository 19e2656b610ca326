#include "ui/Palette.h"

#include "ui/LookPalettes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace lumiwren {
namespace {

struct Look {
  const char *name;
  QPalette palette;
};

QPalette palette(QRgb window, QRgb text, QRgb base) {
  QPalette result;
  result.setColor(QPalette::Window, QColor(window));
  result.setColor(QPalette::WindowText, QColor(text));
  result.setColor(QPalette::Base, QColor(base));
  return result;
}

/// On these there is a colour with the contrast of text to all backgrounds at once.
const std::vector<Look> looks = {
    {"fusion light", palette(0xefefef, 0x000000, 0xffffff)},
    {"fusion dark", palette(0x2b2b2e, 0xeeeeee, 0x1e1e20)},
    {"breeze light", palette(0xeff0f1, 0x232629, 0xffffff)},
    {"breeze dark", palette(0x2a2e32, 0xfcfcfc, 0x1b1e20)},
    {"adwaita light", palette(0xfafafa, 0x2e3436, 0xffffff)},
    {"adwaita dark", palette(0x353535, 0xeeeeec, 0x2d2d2d)},
    {"high contrast", palette(0x000000, 0xffffff, 0x000000)},
    {"high contrast inverse", palette(0xffffff, 0x000000, 0xffffff)},
    {"solarized light", palette(0xeee8d5, 0x586e75, 0xfdf6e3)},
    {"solarized dark", palette(0x073642, 0x93a1a1, 0x002b36)},
    {"mid-grey, dark text", palette(0x999999, 0x101010, 0xaaaaaa)},
    {"mid-grey, light text", palette(0x666666, 0xffffff, 0x555555)},
    {"grey window, white fields", palette(0x8c8c8c, 0x000000, 0xffffff)},
    {"purple", palette(0x8c59d9, 0xffffff, 0x7a48c8)},
    {"our light", lightPalette()},
    {"our dark", darkPalette()},
};

bool haveSameHue(const QColor &one, const QColor &other) {
  const int distance = std::abs(one.hslHue() - other.hslHue());
  return std::min(distance, 360 - distance) <= 6;  // what 8 bits a channel leave of it
}

TEST(Palette, TheAccentColourIsLumiwrenPurple) {
  const QColor purple = lumiwrenPurple();
  EXPECT_NEAR(purple.redF(), 0.55, 0.001);
  EXPECT_NEAR(purple.greenF(), 0.35, 0.001);
  EXPECT_NEAR(purple.blueF(), 0.85, 0.001);
  EXPECT_NEAR(purple.alphaF(), 1, 0.001);
  EXPECT_NEAR(lumiwrenPurple(0.2).alphaF(), 0.2, 0.001);
}

TEST(Palette, ContrastRatiosAreThoseOfWCAG) {
  const struct {
    QRgb one;
    QRgb other;
    double ratio;
  } table[] = {
      {0x000000, 0xffffff, 21},   {0xffffff, 0xffffff, 1},    {0x777777, 0xffffff, 4.48},
      {0x767676, 0xffffff, 4.54}, {0xff0000, 0xffffff, 4.0},  {0x0000ff, 0xffffff, 8.59},
      {0x00ff00, 0x000000, 15.3}, {0x808080, 0x000000, 5.32},
  };
  for (const auto &row : table) {
    EXPECT_NEAR(contrastRatio(QColor(row.one), QColor(row.other)), row.ratio, 0.01 * row.ratio);
    EXPECT_EQ(contrastRatio(QColor(row.one), QColor(row.other)),
              contrastRatio(QColor(row.other), QColor(row.one)));
  }
}

TEST(Palette, AColourThatHasTheContrastStaysAsItIs) {
  EXPECT_EQ(withContrast(QColor(0x0b5cc4), {Qt::white}, 4.5), QColor(0x0b5cc4));
}

TEST(Palette, AColourIsChangedJustAsFarAsNeeded) {
  const QColor lightened = withContrast(lumiwrenPurple(), {QColor(0x2a2e32)}, 4.5);
  EXPECT_GE(contrastRatio(lightened, QColor(0x2a2e32)), 4.5);
  EXPECT_LT(contrastRatio(lightened, QColor(0x2a2e32)), 4.65);
  EXPECT_GT(lightened.lightness(), lumiwrenPurple().lightness());
  EXPECT_TRUE(haveSameHue(lightened, lumiwrenPurple()));

  const QColor darkened = withContrast(QColor(0x6cb4ff), {Qt::white}, 4.5);
  EXPECT_GE(contrastRatio(darkened, Qt::white), 4.5);
  EXPECT_LT(contrastRatio(darkened, Qt::white), 4.65);
  EXPECT_TRUE(haveSameHue(darkened, QColor(0x6cb4ff)));
}

TEST(Palette, AGreyStaysGrey) {
  const QColor grey = withContrast(QColor(0x888888), {Qt::white}, 4.5);
  EXPECT_EQ(grey.red(), grey.green());
  EXPECT_EQ(grey.green(), grey.blue());
  EXPECT_GE(contrastRatio(grey, Qt::white), 4.5);
}

TEST(Palette, AColourMayHaveItsPlaceBetweenTwoBackgrounds) {
  const QColor between = withContrast(Qt::black, {Qt::black, Qt::white}, 4.5);
  EXPECT_GE(contrastRatio(between, Qt::black), 4.5);
  EXPECT_GE(contrastRatio(between, Qt::white), 4.5);
}

TEST(Palette, WhereNoColourHasTheContrastItIsTheMostThereIs) {
  // On this grey white has 3.95 and black 5.3; on black black has none.
  const QColor best = withContrast(QColor(0x606060), {QColor(0x808080), Qt::black}, 4.5);
  EXPECT_EQ(best, QColor(Qt::white));
}

TEST(Palette, TellsDarkFromLight) {
  const struct {
    QPalette palette;
    bool isDark;
  } table[] = {
      {palette(0xefefef, 0x000000, 0xffffff), false},
      {palette(0x2b2b2e, 0xeeeeee, 0x1e1e20), true},
      {palette(0x808080, 0x000000, 0xffffff), false},
      {palette(0x808080, 0xffffff, 0x404040), true},
      {lightPalette(), false},
      {darkPalette(), true},
  };
  for (const auto &row : table) {
    EXPECT_EQ(SemanticColors(row.palette).isDark, row.isDark);
  }
}

TEST(Palette, EverythingIsToldApartOnEveryPalette) {
  for (const auto &look : looks) {
    SCOPED_TRACE(look.name);
    const SemanticColors colors(look.palette);
    for (const auto &background :
         {colors.windowBackground, colors.textBackground, colors.controlBackground}) {
      EXPECT_GE(contrastRatio(colors.secondary, background), 4.5);
      EXPECT_GE(contrastRatio(colors.link, background), 4.5);
      EXPECT_GE(contrastRatio(colors.redText, background), 4.5);
      for (const auto &symbol : {colors.orange, colors.green, colors.red}) {
        EXPECT_GE(contrastRatio(symbol, background), 3);
      }
    }
    EXPECT_GE(contrastRatio(colors.accent, colors.windowBackground), 3);
    EXPECT_GE(contrastRatio(colors.accentText, colors.windowBackground), 4.5);
    EXPECT_TRUE(haveSameHue(colors.accent, lumiwrenPurple()) || colors.accent.hslSaturation() == 0);
  }
}

TEST(Palette, TheAccentIsLumiwrenPurpleWhereThatIsToldApart) {
  EXPECT_EQ(SemanticColors(palette(0xfafafa, 0x2e3436, 0xffffff)).accent, lumiwrenPurple());
  EXPECT_EQ(SemanticColors(palette(0xffffff, 0x000000, 0xffffff)).accentText, lumiwrenPurple());
  EXPECT_NE(SemanticColors(palette(0x8c59d9, 0xffffff, 0x7a48c8)).accent, lumiwrenPurple());
}

TEST(Palette, ColoursFollowThePaletteAtOnce) {
  QPalette changing = palette(0xefefef, 0x000000, 0xffffff);
  EXPECT_EQ(SemanticColors(changing).windowBackground, QColor(0xefefef));
  changing.setColor(QPalette::Window, QColor(0x222222));
  EXPECT_EQ(SemanticColors(changing).windowBackground, QColor(0x222222));
  EXPECT_EQ(SemanticColors(palette(0xefefef, 0x000000, 0xffffff)).windowBackground, QColor(0xefefef));
}

TEST(LookPalettes, EveryRoleIsSetInEveryGroup) {
  for (const auto &look : {lightPalette(), darkPalette()}) {
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
      for (int role = 0; role < QPalette::NColorRoles; ++role) {
        if (role != QPalette::NoRole) {
          EXPECT_TRUE(look.isBrushSet(group, static_cast<QPalette::ColorRole>(role)))
              << "group " << group << ", role " << role;
        }
      }
    }
  }
}

TEST(LookPalettes, TextIsReadableWhereTheToolkitPutsIt) {
  const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {
      {QPalette::WindowText, QPalette::Window},       {QPalette::Text, QPalette::Base},
      {QPalette::Text, QPalette::AlternateBase},      {QPalette::ButtonText, QPalette::Button},
      {QPalette::ToolTipText, QPalette::ToolTipBase}, {QPalette::HighlightedText, QPalette::Highlight},
      {QPalette::PlaceholderText, QPalette::Base},    {QPalette::Link, QPalette::Base},
      {QPalette::LinkVisited, QPalette::Base},        {QPalette::Link, QPalette::Window},
  };
  for (const auto &look : {lightPalette(), darkPalette()}) {
    for (const auto &[text, background] : pairs) {
      for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        EXPECT_GE(contrastRatio(look.color(group, text), look.color(group, background)), 4.5)
            << "roles " << text << " and " << background;
      }
    }
    // What is disabled is fainter, and can still be made out.
    for (const auto &[text, background] : {pairs[0], pairs[1], pairs[3]}) {
      const double enabled = contrastRatio(look.color(QPalette::Active, text), look.color(background));
      const double disabled =
          contrastRatio(look.color(QPalette::Disabled, text), look.color(QPalette::Disabled, background));
      EXPECT_LT(disabled, enabled / 2);
      EXPECT_GE(disabled, 2.4);
    }
  }
}

}  // namespace
}  // namespace lumiwren
