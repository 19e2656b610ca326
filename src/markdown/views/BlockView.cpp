#include "markdown/views/BlockView.h"

#include "markdown/views/CodeBlockView.h"
#include "markdown/views/ListView.h"
#include "markdown/views/TableGridView.h"
#include "markdown/views/TextBlockView.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <variant>

namespace lumiwren {
namespace {

struct Maker {
  std::unique_ptr<BlockView> operator()(const MarkdownHeading &) const {
    return std::make_unique<TextBlockView>();
  }
  std::unique_ptr<BlockView> operator()(const MarkdownParagraph &) const {
    return std::make_unique<TextBlockView>();
  }
  std::unique_ptr<BlockView> operator()(const MarkdownCodeBlock &) const {
    return std::make_unique<CodeBlockView>();
  }
  std::unique_ptr<BlockView> operator()(const MarkdownBulletList &) const {
    return std::make_unique<BulletListView>();
  }
  std::unique_ptr<BlockView> operator()(const MarkdownNumberedList &) const {
    return std::make_unique<NumberedListView>();
  }
  std::unique_ptr<BlockView> operator()(const MarkdownTable &) const {
    return std::make_unique<TableGridView>();
  }
};

qreal distance(qreal value, qreal low, qreal high) {
  return value < low ? low - value : value > high ? value - high : 0;
}

}  // namespace

std::unique_ptr<BlockView> BlockView::make(const MarkdownBlock &block, const SemanticColors &colors) {
  auto view = std::visit(Maker{}, block);
  view->show(block, colors);
  return view;
}

bool BlockView::show(const MarkdownBlock &block, const SemanticColors &colors) {
  width_ = -1;
  return setBlock(block, colors);
}

void BlockView::layOutFor(qreal width) {
  if (width_ != width) {
    width_ = width;
    height_ = std::ceil(layOut(width));
  }
}

TextFragment &BlockView::fragment(std::size_t index) {
  while (fragments_.size() <= index) {
    fragments_.push_back(std::make_unique<TextFragment>());
  }
  return *fragments_[index];
}

void BlockView::setFragmentCount(std::size_t count) {
  fragments_.resize(std::min(count, fragments_.size()));
}

int BlockView::positionAt(QPointF point) const {
  const TextFragment *nearest = nullptr;
  qreal nearestRow = std::numeric_limits<qreal>::max();
  qreal nearestColumn = nearestRow;
  for (const auto &candidate : fragments_) {
    const auto rect = candidate->rect();
    const qreal row = distance(point.y(), rect.top(), rect.bottom());
    const qreal column = distance(point.x(), rect.left(), rect.right());
    if (row < nearestRow || (row == nearestRow && column < nearestColumn)) {
      nearest = candidate.get();
      nearestRow = row;
      nearestColumn = column;
    }
  }
  return nearest ? nearest->positionAt(point) : 0;
}

const FragmentText::Link *BlockView::linkAt(QPointF point) const {
  for (const auto &candidate : fragments_) {
    if (const auto *link = candidate->linkAt(point)) {
      return link;
    }
  }
  return nullptr;
}

}  // namespace lumiwren
