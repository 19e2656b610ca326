#pragma once

#include "markdown/MarkdownBlock.h"
#include "markdown/views/BlockView.h"

#include <memory>
#include <variant>

namespace lumiwren {

/// How one block of an answer looks. The block is not copied: it stays where it is, unchanged, until another
/// one takes its place.
class MarkdownBlockView : public BlockView {
public:
  /// The view of a kind of block, for this one.
  static std::unique_ptr<MarkdownBlockView> make(const MarkdownBlock &block);

  /// Shows another block in place of the one shown. False, and nothing is changed, when it is of another
  /// kind. Both are there during the call.
  bool show(const MarkdownBlock &block);
  /// Shows a block that equals the one shown.
  void rebind(const MarkdownBlock &block) { block_ = &block; }

protected:
  explicit MarkdownBlockView(const MarkdownBlock &block) : block_(&block) {}

  const MarkdownBlock &block() const { return *block_; }
  template <typename Kind>
  const Kind &blockAs() const {
    return std::get<Kind>(*block_);
  }

private:
  /// The first row in which `next`, of the same kind, differs from the block that is shown.
  virtual std::size_t firstDifference(const MarkdownBlock &next) const = 0;

  const MarkdownBlock *block_;
};

}  // namespace lumiwren
