#pragma once

#include "markdown/MarkdownBlock.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace lumiwren {

// All functions are pure and may be called on any thread; each takes time linear in its input. Bytes that are
// no valid UTF-8 are ordinary characters of the line they stand in and come out as they went in.

/// The blocks of a whole answer or of any prefix of one; they point into `markdown`.
std::vector<MarkdownBlock> parseMarkdownContent(std::string_view markdown);

/// The table made of the lines collected for it, delimiter rows included (they are dropped wherever they
/// stand); empty when nothing else is left.
std::optional<MarkdownTable> parseTable(std::span<const std::string_view> lines);

/// The cells of one line of a table, at least one. A backslash does not protect a "|".
std::vector<std::string_view> parseTableRow(std::string_view line);

}  // namespace lumiwren
