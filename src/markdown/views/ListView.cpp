#include "markdown/views/ListView.h"

#include "ui/Fonts.h"

#include <algorithm>
#include <cmath>
#include <variant>

namespace lumiwren {
namespace {

constexpr qreal itemSpacing = 4;
constexpr qreal partSpacing = 8;
constexpr qreal numberBox = 20;
constexpr int fontSize = 13;

}  // namespace

void ListView::setItems(const std::vector<std::string_view> &items, const SemanticColors &colors) {
  const QFont font = systemFont(fontSize);
  setFragmentCount(2 * items.size());
  for (std::size_t index = 0; index < items.size(); ++index) {
    auto &before = fragment(2 * index);
    before.setSeparator(QStringLiteral("\n"));
    before.setText({.text = label(index), .font = font});
    auto &item = fragment(2 * index + 1);
    item.setSeparator(QStringLiteral(" "));
    item.setText(FragmentText::styled(items[index], font, colors));
  }
}

qreal ListView::layOut(qreal width) {
  qreal y = 0;
  for (std::size_t index = 0; index + 1 < fragments().size(); index += 2) {
    auto &before = fragment(index);
    auto &item = fragment(index + 1);
    before.layOut(width, TextFragment::Wrapping::None);
    const qreal box = labelWidth(before);
    before.place({box - before.naturalWidth(), y});
    item.place({box + partSpacing, y});
    y += std::max(before.height(), item.layOut(width - box - partSpacing)) + itemSpacing;
  }
  return y - itemSpacing;
}

void ListView::paint(const FragmentPainting &painting) const {
  for (const auto &fragment : fragments()) {
    fragment->paint(painting, painting.colors.primary);
  }
}

bool BulletListView::setBlock(const MarkdownBlock &block, const SemanticColors &colors) {
  const auto *list = std::get_if<MarkdownBulletList>(&block);
  if (list) {
    setItems(list->items, colors);
  }
  return list != nullptr;
}

QString BulletListView::label(std::size_t /*index*/) const {
  return QStringLiteral("\u2022");
}

qreal BulletListView::labelWidth(const TextFragment &label) const {
  return std::ceil(label.naturalWidth());
}

bool NumberedListView::setBlock(const MarkdownBlock &block, const SemanticColors &colors) {
  const auto *list = std::get_if<MarkdownNumberedList>(&block);
  if (list) {
    setItems(list->items, colors);
  }
  return list != nullptr;
}

QString NumberedListView::label(std::size_t index) const {
  return QString::number(index + 1) + QLatin1Char('.');
}

qreal NumberedListView::labelWidth(const TextFragment &label) const {
  // A number of three digits stays whole, at the cost of its item's alignment.
  return std::max(numberBox, std::ceil(label.naturalWidth()));
}

}  // namespace lumiwren
