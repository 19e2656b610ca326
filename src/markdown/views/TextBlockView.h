#pragma once

#include "markdown/views/MarkdownBlockView.h"

namespace lumiwren {

/// A heading or a paragraph: one text over the whole width.
class TextBlockView : public MarkdownBlockView {
public:
  explicit TextBlockView(const MarkdownBlock &block) : MarkdownBlockView(block) {}

private:
  std::size_t firstDifference(const MarkdownBlock & /*next*/) const override { return 0; }
  std::size_t rowCount() const override { return 1; }
  QString rowText(std::size_t row) const override;
  void fill(std::size_t row, std::vector<TextFragment> &texts, const SemanticColors &colors) const override;
  qreal arrange(std::size_t row, std::vector<TextFragment> &texts) const override;
};

}  // namespace lumiwren
