#include "platform/linux/appearance/PortalSettings.h"

#include "platform/appearance/PrintAppearance.h"

#include <gtest/gtest.h>

#include <QDBusVariant>
#include <QStringList>

#include <limits>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

constexpr const char *fdo = PortalSettings::appearanceNamespace;
constexpr const char *gnome = PortalSettings::gnomeNamespace;
constexpr const char *kde = PortalSettings::kdeNamespace;

struct Setting {
  const char *nameSpace;
  const char *key;
  QVariant value;
};

QVariant wrapped(const QVariant &value) {
  return QVariant::fromValue(QDBusVariant(value));
}

Appearance appearanceOf(const std::vector<Setting> &values) {
  PortalSettings settings;
  for (const Setting &setting : values) {
    settings.set(QLatin1String(setting.nameSpace), QLatin1String(setting.key), setting.value);
  }
  return settings.appearance();
}

TEST(PortalSettings, NothingSaidIsNothingPreferred) {
  EXPECT_EQ(appearanceOf({}), Appearance{});
}

TEST(PortalSettings, ColorSchemes) {
  const struct {
    QVariant value;
    ColorScheme scheme;
  } table[] = {
      {0U, ColorScheme::NoPreference},
      {1U, ColorScheme::Dark},
      {2U, ColorScheme::Light},
      {1, ColorScheme::Dark},
      {3U, ColorScheme::NoPreference},
      {-1, ColorScheme::NoPreference},
      {wrapped(1U), ColorScheme::Dark},
      {wrapped(wrapped(2U)), ColorScheme::Light},
      {QStringLiteral("prefer-dark"), ColorScheme::NoPreference},
      {true, ColorScheme::NoPreference},
      {QStringList{QStringLiteral("1")}, ColorScheme::NoPreference},
      {QVariant(), ColorScheme::NoPreference},
  };
  for (const auto &row : table) {
    EXPECT_EQ(appearanceOf({{fdo, "color-scheme", row.value}}).colorScheme, row.scheme)
        << row.value.toString().toStdString();
  }
}

TEST(PortalSettings, MotionIsReducedWhereAnyDesktopSaysSo) {
  const struct {
    std::vector<Setting> settings;
    bool reduces;
  } table[] = {
      {{{fdo, "reduced-motion", 1U}}, true},
      {{{fdo, "reduced-motion", 0U}}, false},
      {{{fdo, "reduced-motion", wrapped(1U)}}, true},
      {{{fdo, "reduced-motion", QStringLiteral("yes")}}, false},
      {{{gnome, "enable-animations", false}}, true},
      {{{gnome, "enable-animations", true}}, false},
      {{{gnome, "enable-animations", wrapped(false)}}, true},
      {{{gnome, "enable-animations", QStringLiteral("false")}}, false},
      {{{gnome, "enable-animations", 0}}, false},
      {{{kde, "AnimationDurationFactor", 0.0}}, true},
      {{{kde, "AnimationDurationFactor", QStringLiteral("0")}}, true},
      {{{kde, "AnimationDurationFactor", QStringLiteral("0.70710678118654746")}}, false},
      {{{kde, "AnimationDurationFactor", 1.0}}, false},
      {{{kde, "AnimationDurationFactor", QStringLiteral("")}}, false},
      {{{fdo, "reduced-motion", 0U},
        {gnome, "enable-animations", true},
        {kde, "AnimationDurationFactor", QStringLiteral("0")}},
       true},
  };
  for (const auto &row : table) {
    EXPECT_EQ(appearanceOf(row.settings).reducesMotion, row.reduces)
        << row.settings.front().key << ": " << row.settings.front().value.toString().toStdString();
  }
}

TEST(PortalSettings, TheTextScaleIsKeptWithinReason) {
  const struct {
    QVariant value;
    double scale;
  } table[] = {
      {1.25, 1.25},
      {wrapped(1.25), 1.25},
      {0.5, 0.5},
      {3.0, 3.0},
      {0.01, 0.5},
      {-4.0, 0.5},
      {1000.0, 3.0},
      {std::numeric_limits<double>::quiet_NaN(), 1.0},
      {std::numeric_limits<double>::infinity(), 1.0},
      {QStringLiteral("large"), 1.0},
      {QStringLiteral("nan"), 1.0},
      {true, 1.0},
      {QVariant(), 1.0},
  };
  for (const auto &row : table) {
    EXPECT_EQ(appearanceOf({{gnome, "text-scaling-factor", row.value}}).textScale, row.scale)
        << row.value.toString().toStdString();
  }
}

TEST(PortalSettings, TheLastValueCountsAlsoOneOfTheWrongType) {
  EXPECT_EQ(appearanceOf({{fdo, "color-scheme", 1U}, {fdo, "color-scheme", 2U}}).colorScheme,
            ColorScheme::Light);
  EXPECT_EQ(appearanceOf({{fdo, "color-scheme", 1U}, {fdo, "color-scheme", QStringLiteral("?")}}).colorScheme,
            ColorScheme::NoPreference);
}

TEST(PortalSettings, KeysOfOtherNamespacesAreNotTaken) {
  EXPECT_EQ(appearanceOf({{gnome, "color-scheme", 1U},
                          {fdo, "enable-animations", false},
                          {"org.kde.kdeglobals.General", "AnimationDurationFactor", 0.0},
                          {fdo, "accent-color", 1U}}),
            Appearance{});
}

}  // namespace
}  // namespace lumiwren
