#pragma once

#include "markdown/views/MarkdownBlockView.h"

#include <string_view>
#include <vector>

namespace lumiwren {

/// A table whose columns share the width equally. Long cells wrap; where words would have to be broken the
/// columns stay as wide as the words need, and the table scrolls sideways inside its frame.
class TableGridView : public MarkdownBlockView {
public:
  explicit TableGridView(const MarkdownBlock &block) : MarkdownBlockView(block) {}

private:
  std::size_t firstDifference(const MarkdownBlock &next) const override;
  std::size_t rowCount() const override { return table().rows.size() + 1; }
  qreal gapAbove(std::size_t row) const override;
  qreal bottomPadding() const override;
  QRectF scrollPort() const override;
  qreal contentWidth() const override { return contentWidth_; }
  std::size_t prepareRows(std::size_t first) override;
  std::optional<RowExtent> knownExtent(std::size_t row) const override;
  QString rowText(std::size_t row) const override;
  void fill(std::size_t row, std::vector<TextFragment> &texts, const SemanticColors &colors) const override;
  qreal arrange(std::size_t row, std::vector<TextFragment> &texts) const override;
  void paintAbove(const FragmentPainting &painting) const override;

  const MarkdownTable &table() const { return blockAs<MarkdownTable>(); }
  std::string_view cell(std::size_t row, std::size_t column) const;
  qreal widestWord(std::size_t row) const;
  /// Where a column begins; that of the one after the last is where the table ends, and its line.
  qreal columnLeft(std::size_t column) const;
  qreal textWidth(std::size_t column) const;

  std::vector<qreal> widestWords_;  // of the first rows
  qreal contentWidth_ = 0;
  bool isRightToLeft_ = false;
};

}  // namespace lumiwren
