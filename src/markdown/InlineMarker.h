#pragma once

#include "markdown/MarkdownInline.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace lumiwren {

/// A place in the output where the style changes, and the syntax written there that may turn out not to be
/// text.
struct InlineMarker {
  enum class Kind : std::uint8_t { Emphasis, Strikethrough, Code, Image, Link };

  std::size_t position;
  /// Bytes written at `position`, and how many of them are text after all.
  std::size_t length;
  std::size_t kept;
  Kind kind;
  /// How many spans end in front of what is kept and begin behind it; double ones are strong emphasis.
  std::size_t ends = 0;
  std::size_t doubleEnds = 0;
  std::size_t begins = 0;
  std::size_t doubleBegins = 0;
  int link = MarkdownRun::noLink;
};

/// Takes the syntax out of `text` and cuts the rest into runs. The markers are in the order of their
/// positions.
MarkdownInlineText applyMarkers(std::string text, std::span<const InlineMarker> markers,
                                std::vector<std::string> links);

}  // namespace lumiwren
