#pragma once

#include "markdown/views/MarkdownBlockView.h"

#include <string_view>
#include <vector>

namespace lumiwren {

/// Code as it stands, line by line, on a rounded background; lines that are too long are scrolled to.
class CodeBlockView : public MarkdownBlockView {
public:
  explicit CodeBlockView(const MarkdownBlock &block) : MarkdownBlockView(block) {}

private:
  std::size_t firstDifference(const MarkdownBlock &next) const override;
  std::size_t rowCount() const override;
  qreal gapAbove(std::size_t row) const override;
  qreal bottomPadding() const override;
  QRectF scrollPort() const override;
  qreal contentWidth() const override;
  std::size_t prepareRows(std::size_t first) override;
  std::optional<RowExtent> knownExtent(std::size_t row) const override;
  QString rowText(std::size_t row) const override;
  void fill(std::size_t row, std::vector<TextFragment> &texts, const SemanticColors &colors) const override;
  qreal arrange(std::size_t row, std::vector<TextFragment> &texts) const override;
  bool isScrolled(std::size_t row) const override;
  QColor color(std::size_t row, const SemanticColors &colors) const override;
  void paintBelow(const FragmentPainting &painting) const override;

  const MarkdownCodeBlock &code() const { return blockAs<MarkdownCodeBlock>(); }
  bool hasLabel() const;
  std::string_view line(std::size_t row) const;
  QRectF box() const;

  struct Line {
    std::size_t begin;
    std::size_t end;  // before the line feed
    qreal widest;     // of this line and those before it
  };
  std::vector<Line> lines_;
};

}  // namespace lumiwren
