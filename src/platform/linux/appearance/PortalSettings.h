#pragma once

#include "platform/DesktopAppearance.h"

#include <QString>
#include <QVariant>

#include <optional>

namespace lumiwren {

/// What the settings portal has said so far, as far as it matters here. A value of a type that the setting
/// does not have counts as none.
class PortalSettings {
public:
  /// The namespaces that hold something of use.
  static constexpr char appearanceNamespace[] = "org.freedesktop.appearance";
  static constexpr char gnomeNamespace[] = "org.gnome.desktop.interface";
  static constexpr char kdeNamespace[] = "org.kde.kdeglobals.KDE";

  void set(const QString &nameSpace, const QString &key, const QVariant &value);

  /// Motion is reduced where any of the settings for it says so: a desktop may hand out those of other
  /// desktops too, at their defaults.
  Appearance appearance() const;

private:
  std::optional<double> colorScheme_;
  std::optional<double> reducedMotion_;
  std::optional<bool> enableAnimations_;
  std::optional<double> animationDurationFactor_;
  std::optional<double> textScalingFactor_;
};

}  // namespace lumiwren
