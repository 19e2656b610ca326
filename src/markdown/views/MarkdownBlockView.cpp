#include "markdown/views/MarkdownBlockView.h"

#include "markdown/views/CodeBlockView.h"
#include "markdown/views/ListView.h"
#include "markdown/views/TableGridView.h"
#include "markdown/views/TextBlockView.h"

namespace lumiwren {
namespace {

struct Maker {
  const MarkdownBlock &block;

  std::unique_ptr<MarkdownBlockView> operator()(const MarkdownHeading &) const {
    return std::make_unique<TextBlockView>(block);
  }
  std::unique_ptr<MarkdownBlockView> operator()(const MarkdownParagraph &) const {
    return std::make_unique<TextBlockView>(block);
  }
  std::unique_ptr<MarkdownBlockView> operator()(const MarkdownCodeBlock &) const {
    return std::make_unique<CodeBlockView>(block);
  }
  std::unique_ptr<MarkdownBlockView> operator()(const MarkdownBulletList &) const {
    return std::make_unique<BulletListView>(block);
  }
  std::unique_ptr<MarkdownBlockView> operator()(const MarkdownNumberedList &) const {
    return std::make_unique<NumberedListView>(block);
  }
  std::unique_ptr<MarkdownBlockView> operator()(const MarkdownTable &) const {
    return std::make_unique<TableGridView>(block);
  }
};

}  // namespace

std::unique_ptr<MarkdownBlockView> MarkdownBlockView::make(const MarkdownBlock &block) {
  return std::visit(Maker{block}, block);
}

bool MarkdownBlockView::show(const MarkdownBlock &block) {
  if (block.index() != block_->index()) {
    return false;
  }
  const std::size_t first = firstDifference(block);
  block_ = &block;
  rowsChanged(first);
  return true;
}

}  // namespace lumiwren
