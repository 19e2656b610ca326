#pragma once

#include "markdown/MarkdownBlock.h"
#include "markdown/views/TextFragment.h"
#include "ui/Palette.h"

#include <QPointF>
#include <QString>

#include <memory>
#include <vector>

namespace lumiwren {

/// How one block of an answer looks. Positions are those of the block: its top left corner is the origin.
/// Views know nothing of each other; MarkdownTextView stacks them.
class BlockView {
public:
  BlockView() = default;
  BlockView(const BlockView &) = delete;
  BlockView &operator=(const BlockView &) = delete;
  virtual ~BlockView() = default;

  static std::unique_ptr<BlockView> make(const MarkdownBlock &block, const SemanticColors &colors);

  /// Shows another block of the same kind in place of the one shown, with as little work as the difference
  /// allows. False, and nothing is changed, when the kind is another one.
  bool show(const MarkdownBlock &block, const SemanticColors &colors);
  /// Does nothing when the block is laid out for this width.
  void layOutFor(qreal width);
  /// In whole points, as of the last layout.
  qreal height() const { return height_; }
  virtual void paint(const FragmentPainting &painting) const = 0;
  /// By how much what is drawn can be moved to the left, for blocks wider than their place.
  virtual qreal scrollRange() const { return 0; }
  virtual qreal scrollOffset() const { return 0; }
  virtual void setScrollOffset(qreal /*offset*/) {}

  std::vector<std::unique_ptr<TextFragment>> &fragments() { return fragments_; }
  const std::vector<std::unique_ptr<TextFragment>> &fragments() const { return fragments_; }

  /// The position in the plain text nearest to a point.
  int positionAt(QPointF point) const;
  const FragmentText::Link *linkAt(QPointF point) const;

protected:
  virtual bool setBlock(const MarkdownBlock &block, const SemanticColors &colors) = 0;
  /// Returns the height.
  virtual qreal layOut(qreal width) = 0;

  /// The fragment at `index`; fragments grow as they are asked for.
  TextFragment &fragment(std::size_t index);
  void setFragmentCount(std::size_t count);

private:
  std::vector<std::unique_ptr<TextFragment>> fragments_;
  qreal width_ = -1;
  qreal height_ = 0;
};

}  // namespace lumiwren
