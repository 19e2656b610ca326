#pragma once

#include "base/Handle.h"

#include <functional>

namespace lumiwren {

enum class ColorScheme { NoPreference, Dark, Light };

/// What the user has asked of all programs of the desktop.
struct Appearance {
  /// Beyond these text is unreadable or windows fall apart, whatever the desktop says.
  static constexpr double minimumTextScale = 0.5;
  static constexpr double maximumTextScale = 3;

  ColorScheme colorScheme = ColorScheme::NoPreference;
  bool reducesMotion = false;
  /// By how much text is to be larger than usual. The display server's resolution may contain it already.
  double textScale = 1;

  friend bool operator==(const Appearance &, const Appearance &) = default;
};

/// How the user wants the desktop to look. Main thread; never blocks: the desktop is asked in the background,
/// until it has answered nothing is preferred, and its answer comes as a change.
class DesktopAppearance {
public:
  virtual ~DesktopAppearance() = default;

  virtual Appearance current() = 0;
  /// The observer is told of each change, for as long as the handle is held.
  virtual Handle observe(std::function<void(const Appearance &)> observer) = 0;
};

}  // namespace lumiwren
