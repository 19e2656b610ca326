#pragma once

#include <string>
#include <string_view>

namespace lumiwren::testing {

/// What parseInlineMarkdown yields, as describe() writes it, for a line of letters, spaces, quotation marks
/// and runs of "*", "_" and "~" only: CommonMark's delimiter algorithm word for word, without any of its
/// short cuts.
std::string describeEmphasisSlowly(std::string_view line);

}  // namespace lumiwren::testing
