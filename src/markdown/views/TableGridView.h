#pragma once

#include "markdown/views/BlockView.h"

#include <vector>

namespace lumiwren {

/// A table whose columns share the width equally. Cells that are too long wrap.
class TableGridView : public BlockView {
public:
  void paint(const FragmentPainting &painting) const override;

private:
  bool setBlock(const MarkdownBlock &block, const SemanticColors &colors) override;
  qreal layOut(qreal width) override;
  std::size_t columnCount_ = 0;
  qreal width_ = 0;
  std::vector<qreal> rowTops_;  // of the header and each row, and the bottom of the last one
};

}  // namespace lumiwren
