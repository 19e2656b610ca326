#pragma once

#include "platform/DesktopAppearance.h"

#include <ostream>

namespace lumiwren {

/// What GoogleTest shows of an appearance.
inline void PrintTo(const Appearance &appearance, std::ostream *out) {
  *out << "scheme " << static_cast<int>(appearance.colorScheme) << ", reduces motion "
       << appearance.reducesMotion << ", text scale " << appearance.textScale;
}

}  // namespace lumiwren
