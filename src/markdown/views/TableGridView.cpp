#include "markdown/views/TableGridView.h"

#include "base/Unicode.h"
#include "ui/Fonts.h"

#include <algorithm>
#include <string_view>
#include <variant>

namespace lumiwren {
namespace {

constexpr int fontSize = 12;
constexpr qreal horizontalPadding = 10;
constexpr qreal headerPadding = 6;
constexpr qreal rowPadding = 5;
constexpr qreal lineWidth = 1;
constexpr qreal cornerRadius = 4;

}  // namespace

bool TableGridView::setBlock(const MarkdownBlock &block, const SemanticColors & /*colors*/) {
  const auto *table = std::get_if<MarkdownTable>(&block);
  if (!table) {
    return false;
  }
  columnCount_ = table->columnCount;
  setFragmentCount((table->rows.size() + 1) * columnCount_);
  const auto setRow = [&](std::size_t row, const std::vector<std::string_view> &cells, const QFont &font) {
    for (std::size_t column = 0; column < columnCount_; ++column) {
      const auto text =
          column < cells.size() ? unicode::trimHorizontalSpace(cells[column]) : std::string_view();
      auto &cell = fragment(row * columnCount_ + column);
      cell.setSeparator(column == 0 ? QStringLiteral("\n") : QStringLiteral("\t"));
      cell.setText(FragmentText::plain(text, font));
    }
  };
  setRow(0, table->headers, systemFont(fontSize, QFont::DemiBold));
  const QFont font = systemFont(fontSize);
  for (std::size_t row = 0; row < table->rows.size(); ++row) {
    setRow(row + 1, table->rows[row], font);
  }
  return true;
}

qreal TableGridView::layOut(qreal width) {
  width_ = width;
  rowTops_.clear();
  const auto columns = static_cast<qreal>(columnCount_);
  const qreal columnWidth = (width - (columns - 1) * lineWidth) / columns;
  qreal y = 0;
  for (std::size_t first = 0; first < fragments().size(); first += columnCount_) {
    const qreal padding = first == 0 ? headerPadding : rowPadding;
    qreal height = 0;
    rowTops_.push_back(y);
    for (std::size_t column = 0; column < columnCount_; ++column) {
      auto &cell = fragment(first + column);
      height = std::max(height, cell.layOut(columnWidth - 2 * horizontalPadding));
      cell.place({static_cast<qreal>(column) * (columnWidth + lineWidth) + horizontalPadding, y + padding});
    }
    y += height + 2 * padding + lineWidth;
  }
  // The header has its line below it also when it is alone; the last row has none.
  if (rowTops_.size() > 1) {
    y -= lineWidth;
  }
  rowTops_.push_back(y);
  return y;
}

void TableGridView::paint(const FragmentPainting &painting) const {
  auto &painter = painting.painter;
  const QColor border = withOpacity(painting.colors.primary, MarkdownTable::borderColor.opacity);
  const QColor inner = withOpacity(border, 0.5);
  const auto columns = static_cast<qreal>(columnCount_);
  const qreal columnWidth = (width_ - (columns - 1) * lineWidth) / columns;
  for (std::size_t row = 0; row + 1 < rowTops_.size(); ++row) {
    const bool isHeader = row == 0;
    const bool isLast = row + 2 == rowTops_.size();
    const bool hasLine = isHeader || !isLast;
    const qreal bottom = rowTops_[row + 1] - (hasLine ? lineWidth : 0);
    const QColor &color = isHeader ? border : inner;
    for (std::size_t column = 1; column < columnCount_; ++column) {
      const qreal x = static_cast<qreal>(column) * (columnWidth + lineWidth) - lineWidth;
      painter.fillRect(QRectF(x, rowTops_[row], lineWidth, bottom - rowTops_[row]), color);
    }
    if (hasLine) {
      painter.fillRect(QRectF(0, bottom, width_, lineWidth), color);
    }
  }
  painter.setPen(QPen(border, lineWidth));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(QRectF(0, 0, width_, rowTops_.back()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius,
                          cornerRadius);
  for (const auto &cell : fragments()) {
    cell->paint(painting, painting.colors.primary);
  }
}

}  // namespace lumiwren
