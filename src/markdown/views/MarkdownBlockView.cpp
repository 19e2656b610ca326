#include "markdown/views/MarkdownBlockView.h"

#include "markdown/views/CodeBlockView.h"
#include "markdown/views/ListView.h"
#include "markdown/views/TableGridView.h"
#include "markdown/views/TextBlockView.h"

#include <type_traits>

namespace lumiwren {
namespace {

/// Which view shows a kind of block.
template <typename Kind>
struct ViewOf;
template <>
struct ViewOf<MarkdownHeading> : std::type_identity<TextBlockView> {};
template <>
struct ViewOf<MarkdownParagraph> : std::type_identity<TextBlockView> {};
template <>
struct ViewOf<MarkdownCodeBlock> : std::type_identity<CodeBlockView> {};
template <>
struct ViewOf<MarkdownBulletList> : std::type_identity<BulletListView> {};
template <>
struct ViewOf<MarkdownNumberedList> : std::type_identity<NumberedListView> {};
template <>
struct ViewOf<MarkdownTable> : std::type_identity<TableGridView> {};

}  // namespace

std::unique_ptr<MarkdownBlockView> MarkdownBlockView::make(const MarkdownBlock &block) {
  return std::visit(
      [&block]<typename Kind>(const Kind &) -> std::unique_ptr<MarkdownBlockView> {
        return std::make_unique<typename ViewOf<Kind>::type>(block);
      },
      block);
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
