#pragma once

#include <string_view>

namespace lumiwren {

/// Prints `text` as one line on standard output, where failures are reported that the user need not see. Line
/// breaks and other control characters within it are shown as "?". Any thread.
void printLine(std::string_view text);

}  // namespace lumiwren
