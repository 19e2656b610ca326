#include "markdown/MarkdownInline.h"

namespace lumiwren {

MarkdownInlineText parseInlineMarkdown(std::string_view line) {
  MarkdownInlineText result{std::string(line), {}, {}};
  if (!line.empty()) {
    result.runs.push_back({0, line.size()});
  }
  return result;
}

}  // namespace lumiwren
