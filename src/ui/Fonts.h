#pragma once

#include <QFont>

namespace lumiwren {

/// The desktop's user-interface font. Sizes are in points, one of which is one device-independent pixel.
QFont systemFont(int size, QFont::Weight weight = QFont::Normal);
/// The desktop's font of fixed width.
QFont monospacedSystemFont(int size);

}  // namespace lumiwren
