#pragma once

#include "markdown/MarkdownInline.h"

#include <string_view>

namespace lumiwren::testing {

/// What cmark-gfm with its strikethrough extension makes of `line`, as the runs that parseInlineMarkdown
/// yields. The line has no line ends and no NUL and is valid UTF-8.
MarkdownInlineText interpretWithCMark(std::string_view line);

/// The same runs with the links in order of appearance, each once.
MarkdownInlineText normalized(const MarkdownInlineText &text);

}  // namespace lumiwren::testing
