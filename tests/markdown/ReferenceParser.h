#pragma once

#include <string>
#include <string_view>

namespace lumiwren::testing {

/// What parseMarkdownContent yields, as describe() writes it, found the slow and obvious way: lines in a
/// list, code points, patterns matched by trying everything. For valid UTF-8 whose decimal digits beyond
/// ASCII are U+0663 and U+FF13 only.
std::string describeBlocksSlowly(std::string_view markdown);

}  // namespace lumiwren::testing
