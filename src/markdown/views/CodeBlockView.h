#pragma once

#include "markdown/views/BlockView.h"

namespace lumiwren {

/// Code as it stands, line by line, on a rounded background; lines that are too long are scrolled to.
class CodeBlockView : public BlockView {
public:
  void paint(const FragmentPainting &painting) const override;
  qreal scrollRange() const override;
  qreal scrollOffset() const override { return scrollOffset_; }
  void setScrollOffset(qreal offset) override;

private:
  bool setBlock(const MarkdownBlock &block, const SemanticColors &colors) override;
  qreal layOut(qreal width) override;
  void placeLines();

  bool hasLabel_ = false;  // the first fragment is the language's name
  QRectF box_;
  qreal longestLine_ = 0;
  qreal scrollOffset_ = 0;
};

}  // namespace lumiwren
