#include "markdown/views/TableGridView.h"

#include "base/Unicode.h"
#include "markdown/views/QuickMetrics.h"
#include "ui/DevicePixels.h"
#include "ui/Fonts.h"
#include "ui/PixelGrid.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace lumiwren {
namespace {

constexpr int tableFontSize = 12;
constexpr qreal cellHorizontalPadding = 10;
constexpr qreal headerPadding = 6;
constexpr qreal rowPadding = 5;
constexpr qreal lineWidth = 1;
constexpr qreal tableCornerRadius = 4;
constexpr qreal thumbStrip = 7;           // below the last row of a table that scrolls
constexpr std::size_t measuredRows = 50;  // whose words decide how wide columns have to be
constexpr qreal widestColumn = 140;       // for the sake of a long word

QFont fontOf(std::size_t row) {
  return row == 0 ? systemFont(tableFontSize, QFont::DemiBold) : systemFont(tableFontSize);
}

qreal paddingOf(std::size_t row) {
  return row == 0 ? headerPadding : rowPadding;
}

}  // namespace

std::size_t TableGridView::firstDifference(const MarkdownBlock &next) const {
  const auto &theirs = std::get<MarkdownTable>(next);
  if (theirs.columnCount != table().columnCount || theirs.headers != table().headers) {
    return 0;
  }
  const auto &mine = table().rows;
  return static_cast<std::size_t>(
      std::mismatch(mine.begin(), mine.end(), theirs.rows.begin(), theirs.rows.end()).first - mine.begin() +
      1);
}

std::string_view TableGridView::cell(std::size_t row, std::size_t column) const {
  const auto &cells = row == 0 ? table().headers : table().rows[row - 1];
  return column < cells.size() ? unicode::trimHorizontalSpace(cells[column]) : std::string_view();
}

qreal TableGridView::widestWord(std::size_t row) const {
  const QFont font = fontOf(row);
  const auto &metrics = QuickMetrics::of(font);
  qreal widest = 0;
  for (std::size_t column = 0; column < table().columnCount; ++column) {
    auto rest = cell(row, column);
    while (!rest.empty()) {
      const auto end = std::min(rest.find(' '), rest.size());
      const auto word = rest.substr(0, end);
      const auto width = metrics.width(word);
      // Other scripts may break inside a word.
      widest = std::max(widest, width ? *width : QFontMetricsF(font).averageCharWidth() * 6);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  return widest;
}

std::size_t TableGridView::prepareRows(std::size_t first) {
  const qreal before = contentWidth_;
  widestWords_.resize(std::min(widestWords_.size(), first));
  while (widestWords_.size() < std::min(rowCount(), measuredRows)) {
    widestWords_.push_back(widestWord(widestWords_.size()));
  }
  const auto columns = static_cast<qreal>(table().columnCount);
  const qreal share = (width() - (columns - 1) * lineWidth) / columns;
  const qreal needed =
      std::min(widestColumn, std::ceil(*std::max_element(widestWords_.begin(), widestWords_.end())) +
                                 2 * cellHorizontalPadding);
  contentWidth_ = needed > share ? columns * (needed + lineWidth) - lineWidth : width();
  if (first > 0 && contentWidth_ == before) {
    return first;
  }
  const auto &headers = table().headers;
  const auto begins = std::find_if(headers.begin(), headers.end(), [](std::string_view header) {
    return !unicode::trimHorizontalSpace(header).empty();
  });
  isRightToLeft_ = begins != headers.end() && fromUtf8(*begins).isRightToLeft();
  return 0;
}

qreal TableGridView::columnLeft(std::size_t column) const {
  // On whole points, so that lines are sharp.
  return std::floor(static_cast<qreal>(column) * (contentWidth_ + lineWidth) /
                    static_cast<qreal>(table().columnCount));
}

qreal TableGridView::textWidth(std::size_t column) const {
  return columnLeft(column + 1) - columnLeft(column) - lineWidth - 2 * cellHorizontalPadding;
}

qreal TableGridView::gapAbove(std::size_t row) const {
  return row > 0 ? lineWidth : 0;
}

qreal TableGridView::bottomPadding() const {
  // The header has its line below it also when it is alone; the last row has none.
  return (table().rows.empty() ? lineWidth : 0) + (scrollRange() > 0 ? thumbStrip : 0);
}

QRectF TableGridView::scrollPort() const {
  return QRectF(0, 0, width(), height()).adjusted(lineWidth, 0, -lineWidth, 0);
}

std::optional<BlockView::RowExtent> TableGridView::knownExtent(std::size_t row) const {
  const auto &metrics = QuickMetrics::of(fontOf(row));
  RowExtent extent{metrics.lineHeight() + 2 * paddingOf(row), static_cast<int>(table().columnCount) - 1};
  for (std::size_t column = 0; column < table().columnCount; ++column) {
    const auto text = cell(row, column);
    const auto width = metrics.width(text);
    if (!width || *width > textWidth(column)) {
      return std::nullopt;
    }
    extent.length += static_cast<int>(text.size());
  }
  return extent;
}

QString TableGridView::rowText(std::size_t row) const {
  QString text;
  for (std::size_t column = 0; column < table().columnCount; ++column) {
    if (column > 0) {
      text += QLatin1Char('\t');
    }
    text += fromUtf8(cell(row, column));
  }
  return text;
}

void TableGridView::fill(std::size_t row, std::vector<TextFragment> &texts,
                         const SemanticColors & /*colors*/) const {
  const QFont font = fontOf(row);
  texts.resize(table().columnCount);
  for (std::size_t column = 0; column < texts.size(); ++column) {
    texts[column].setText(FragmentText::plain(cell(row, column), font));
  }
}

qreal TableGridView::arrange(std::size_t row, std::vector<TextFragment> &texts) const {
  qreal height = 0;
  for (std::size_t column = 0; column < texts.size(); ++column) {
    height = std::max(height, texts[column].layOut(textWidth(column)));
    const qreal left =
        isRightToLeft_ ? contentWidth_ + lineWidth - columnLeft(column + 1) : columnLeft(column);
    texts[column].place({left + cellHorizontalPadding, paddingOf(row)});
  }
  return height + 2 * paddingOf(row);
}

void TableGridView::paintAbove(const FragmentPainting &painting) const {
  auto &painter = painting.painter;
  const QColor border = withOpacity(painting.colors.primary, MarkdownTable::borderColor.opacity);
  const QColor inner = withOpacity(border, 0.5);
  painter.save();
  painter.setClipRect(QRectF(0, 0, width(), height()), Qt::IntersectClip);
  {
    const DevicePixels device(painter);
    const int line = device.hairline();
    for (std::size_t row = rowAt(painting.exposed.top() - lineWidth);
         row < rows().size() && rows()[row].top <= painting.exposed.bottom(); ++row) {
      const auto &place = rows()[row];
      const QColor &color = row == 0 ? border : inner;
      for (std::size_t column = 1; column < table().columnCount; ++column) {
        const qreal left =
            isRightToLeft_ ? contentWidth_ - columnLeft(column) : columnLeft(column) - lineWidth;
        QRect vertical = device.rect(QRectF(left - scrollOffset(), place.top, lineWidth, place.height));
        vertical.setWidth(line);
        painter.fillRect(vertical, color);
      }
      if (row == 0 || row + 1 < rows().size()) {
        QRect horizontal = device.rect(QRectF(0, place.bottom(), width(), lineWidth));
        horizontal.setHeight(line);
        painter.fillRect(horizontal, color);
      }
    }
  }
  painter.restore();
  strokeInside(painter, QRectF(0, 0, width(), height()), lineWidth, tableCornerRadius, border);
}

}  // namespace lumiwren
