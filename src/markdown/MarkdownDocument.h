#pragma once

#include "markdown/MarkdownParser.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace lumiwren {

/// A Markdown text together with its blocks, which point into it. Move-only; moving leaves the blocks valid.
class MarkdownDocument {
public:
  explicit MarkdownDocument(std::string markdown)
      : text_(std::make_unique<const std::string>(std::move(markdown))),
        blocks_(parseMarkdownContent(*text_)) {}

  [[nodiscard]] const std::string &text() const { return *text_; }
  [[nodiscard]] const std::vector<MarkdownBlock> &blocks() const { return blocks_; }

private:
  std::unique_ptr<const std::string> text_;
  std::vector<MarkdownBlock> blocks_;
};

}  // namespace lumiwren
