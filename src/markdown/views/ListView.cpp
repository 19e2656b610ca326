#include "markdown/views/ListView.h"

#include "ui/Fonts.h"

#include <algorithm>
#include <cmath>

namespace lumiwren {
namespace {

constexpr qreal itemSpacing = 4;
constexpr qreal listPartSpacing = 8;
constexpr qreal numberBox = 20;
constexpr int listFontSize = 13;

}  // namespace

std::size_t ListView::firstDifference(const MarkdownBlock &next) const {
  const auto &mine = items(block());
  const auto &theirs = items(next);
  return static_cast<std::size_t>(
      std::mismatch(mine.begin(), mine.end(), theirs.begin(), theirs.end()).first - mine.begin());
}

qreal ListView::gapAbove(std::size_t row) const {
  return row > 0 ? itemSpacing : 0;
}

std::size_t ListView::prepareRows(std::size_t first) {
  if (first > 0) {
    return first;
  }
  isRightToLeft_ = inlinePlainText(items(block()).front()).isRightToLeft();
  return 0;
}

QString ListView::rowText(std::size_t row) const {
  return label(row) + QLatin1Char(' ') + inlinePlainText(items(block())[row]);
}

void ListView::fill(std::size_t row, std::vector<TextFragment> &texts, const SemanticColors &colors) const {
  const QFont font = systemFont(listFontSize);
  if (texts.empty()) {
    texts.emplace_back(TextFragment::Wrapping::None);
    texts.emplace_back();
  }
  texts[0].setText({.text = label(row), .font = font});
  texts[1].setText(FragmentText::styled(items(block())[row], font, colors));
}

qreal ListView::arrange(std::size_t /*row*/, std::vector<TextFragment> &texts) const {
  auto &before = texts[0];
  auto &item = texts[1];
  const qreal labelHeight = before.layOut(width());
  const qreal box = labelWidth(before);
  const qreal itemHeight = item.layOut(width() - box - listPartSpacing);
  if (isRightToLeft_) {
    before.place({width() - box, 0});
    item.place({0, 0});
  } else {
    before.place({box - before.naturalWidth(), 0});
    item.place({box + listPartSpacing, 0});
  }
  return std::max(labelHeight, itemHeight);
}

const std::vector<std::string_view> &BulletListView::items(const MarkdownBlock &block) const {
  return std::get<MarkdownBulletList>(block).items;
}

QString BulletListView::label(std::size_t /*index*/) const {
  return QStringLiteral("\u2022");
}

qreal BulletListView::labelWidth(const TextFragment &label) const {
  return std::ceil(label.naturalWidth());
}

const std::vector<std::string_view> &NumberedListView::items(const MarkdownBlock &block) const {
  return std::get<MarkdownNumberedList>(block).items;
}

QString NumberedListView::label(std::size_t index) const {
  return QString::number(index + 1) + QLatin1Char('.');
}

qreal NumberedListView::labelWidth(const TextFragment &label) const {
  // A number of three digits stays whole, at the cost of its item's alignment.
  return std::max(numberBox, std::ceil(label.naturalWidth()));
}

}  // namespace lumiwren
