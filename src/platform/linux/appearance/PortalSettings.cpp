#include "platform/linux/appearance/PortalSettings.h"

#include <QDBusVariant>
#include <QLatin1String>

#include <algorithm>
#include <cmath>

namespace lumiwren {
namespace {

// The numbers of org.freedesktop.appearance.
constexpr double preferDark = 1;
constexpr double preferLight = 2;
constexpr double reduceMotion = 1;

/// Portals of the interface's first version have some values in a variant in a variant.
QVariant unwrapped(QVariant value) {
  while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
    value = value.value<QDBusVariant>().variant();
  }
  return value;
}

/// KDE's settings come out of a text file, and as texts.
std::optional<double> number(const QVariant &value) {
  switch (value.typeId()) {
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QString: {
      bool isNumber = false;
      const double result = value.toDouble(&isNumber);
      return isNumber && std::isfinite(result) ? std::optional(result) : std::nullopt;
    }
    default:
      return std::nullopt;
  }
}

std::optional<bool> truth(const QVariant &value) {
  return value.typeId() == QMetaType::Bool ? std::optional(value.toBool()) : std::nullopt;
}

}  // namespace

void PortalSettings::set(const QString &nameSpace, const QString &key, const QVariant &value) {
  const QVariant given = unwrapped(value);
  const auto is = [&](const char *wantedNamespace, const char *wantedKey) {
    return nameSpace == QLatin1String(wantedNamespace) && key == QLatin1String(wantedKey);
  };
  if (is(appearanceNamespace, "color-scheme")) {
    colorScheme_ = number(given);
  } else if (is(appearanceNamespace, "reduced-motion")) {
    reducedMotion_ = number(given);
  } else if (is(gnomeNamespace, "enable-animations")) {
    enableAnimations_ = truth(given);
  } else if (is(gnomeNamespace, "text-scaling-factor")) {
    textScalingFactor_ = number(given);
  } else if (is(kdeNamespace, "AnimationDurationFactor")) {
    animationDurationFactor_ = number(given);
  }
}

Appearance PortalSettings::appearance() const {
  Appearance result;
  if (colorScheme_ == preferDark) {
    result.colorScheme = ColorScheme::Dark;
  } else if (colorScheme_ == preferLight) {
    result.colorScheme = ColorScheme::Light;
  }
  result.reducesMotion =
      reducedMotion_ == reduceMotion || enableAnimations_ == false || animationDurationFactor_ == 0.0;
  result.textScale =
      std::clamp(textScalingFactor_.value_or(1), Appearance::minimumTextScale, Appearance::maximumTextScale);
  return result;
}

}  // namespace lumiwren
