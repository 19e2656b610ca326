#pragma once

#include "markdown/views/BlockView.h"

namespace lumiwren {

/// A heading, a paragraph or a plain text: one text over the whole width.
class TextBlockView : public BlockView {
public:
  void showText(FragmentText text);
  void paint(const FragmentPainting &painting) const override;

private:
  bool setBlock(const MarkdownBlock &block, const SemanticColors &colors) override;
  qreal layOut(qreal width) override;
};

}  // namespace lumiwren
