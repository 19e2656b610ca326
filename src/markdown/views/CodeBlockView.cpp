#include "markdown/views/CodeBlockView.h"

#include "markdown/views/QuickMetrics.h"
#include "ui/Fonts.h"

#include <algorithm>
#include <cmath>

namespace lumiwren {
namespace {

constexpr qreal codePartSpacing = 4;
constexpr qreal codePadding = 8;
constexpr qreal codeCornerRadius = 6;
constexpr int labelFontSize = 10;
constexpr int codeFontSize = 12;

bool isLabelled(const MarkdownCodeBlock &code) {
  const auto &hidden = MarkdownCodeBlock::hiddenLanguages;
  return std::find(hidden.begin(), hidden.end(), code.language) == hidden.end();
}

}  // namespace

bool CodeBlockView::hasLabel() const {
  return isLabelled(code());
}

std::size_t CodeBlockView::firstDifference(const MarkdownBlock &next) const {
  const auto &theirs = std::get<MarkdownCodeBlock>(next);
  if (theirs.language != code().language) {
    return 0;
  }
  const auto before = code().code;
  const auto now = theirs.code;
  const auto common = static_cast<std::size_t>(
      now.starts_with(before)
          ? static_cast<std::ptrdiff_t>(before.size())
          : std::mismatch(before.begin(), before.end(), now.begin(), now.end()).first - before.begin());
  const auto line = std::partition_point(lines_.begin(), lines_.end(),
                                         [common](const Line &known) { return known.end < common; });
  return static_cast<std::size_t>(line - lines_.begin()) + (hasLabel() ? 1 : 0);
}

std::size_t CodeBlockView::rowCount() const {
  return lines_.size() + (hasLabel() ? 1 : 0);
}

std::size_t CodeBlockView::prepareRows(std::size_t first) {
  const std::size_t labels = hasLabel() ? 1 : 0;
  lines_.resize(std::min(lines_.size(), first > labels ? first - labels : 0));
  const auto text = code().code;
  const QFont font = monospacedSystemFont(codeFontSize);
  const auto &metrics = QuickMetrics::of(font);
  std::size_t begin = lines_.empty() ? 0 : lines_.back().end + 1;
  while (true) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    const auto shown = text.substr(begin, end - begin);
    auto width = metrics.width(shown);
    if (!width) {
      TextFragment measured(TextFragment::Wrapping::None);
      measured.setText(FragmentText::plain(shown, font));
      measured.layOut(1);
      width = measured.naturalWidth();
    }
    lines_.push_back({begin, end, std::max(std::ceil(*width), lines_.empty() ? 0 : lines_.back().widest)});
    if (end == text.size()) {
      break;
    }
    begin = end + 1;
  }
  return first;
}

std::string_view CodeBlockView::line(std::size_t row) const {
  const auto &known = lines_[row - (hasLabel() ? 1 : 0)];
  auto text = code().code.substr(known.begin, known.end - known.begin);
  if (text.ends_with('\r')) {
    text.remove_suffix(1);
  }
  return text;
}

qreal CodeBlockView::gapAbove(std::size_t row) const {
  const std::size_t firstLine = hasLabel() ? 1 : 0;
  return row != firstLine ? 0 : codePadding + (hasLabel() ? codePartSpacing : 0);
}

qreal CodeBlockView::bottomPadding() const {
  return codePadding;
}

QRectF CodeBlockView::box() const {
  const qreal top = hasLabel() ? rows().front().bottom() + codePartSpacing : 0;
  return {0, top, width(), height() - top};
}

QRectF CodeBlockView::scrollPort() const {
  return box();
}

qreal CodeBlockView::contentWidth() const {
  return lines_.empty() ? 0 : lines_.back().widest + 2 * codePadding;
}

std::optional<BlockView::RowExtent> CodeBlockView::knownExtent(std::size_t row) const {
  if (row == 0 && hasLabel()) {
    return std::nullopt;
  }
  // Lines are equally high, whatever letters they hold.
  return RowExtent{QuickMetrics::of(monospacedSystemFont(codeFontSize)).lineHeight(), utf16Length(line(row))};
}

QString CodeBlockView::rowText(std::size_t row) const {
  return row == 0 && hasLabel() ? fromUtf8(code().language) : fromUtf8(line(row));
}

void CodeBlockView::fill(std::size_t row, std::vector<TextFragment> &texts,
                         const SemanticColors & /*colors*/) const {
  const bool isLabel = row == 0 && hasLabel();
  if (texts.empty()) {
    texts.emplace_back(isLabel ? TextFragment::Wrapping::Wrap : TextFragment::Wrapping::None);
  }
  texts.front().setText(isLabel
                            ? FragmentText::plain(code().language, systemFont(labelFontSize, QFont::Medium))
                            : FragmentText::plain(line(row), monospacedSystemFont(codeFontSize)));
}

qreal CodeBlockView::arrange(std::size_t row, std::vector<TextFragment> &texts) const {
  auto &text = texts.front();
  const qreal height = text.layOut(width());
  const auto extent = knownExtent(row);
  if (!extent) {
    return height;
  }
  text.place({codePadding, std::floor((extent->height - height) / 2)});
  return extent->height;
}

bool CodeBlockView::isScrolled(std::size_t row) const {
  return row > 0 || !hasLabel();
}

QColor CodeBlockView::color(std::size_t row, const SemanticColors &colors) const {
  return row == 0 && hasLabel() ? colors.secondary : colors.primary;
}

void CodeBlockView::paintBelow(const FragmentPainting &painting) const {
  painting.painter.setPen(Qt::NoPen);
  painting.painter.setBrush(painting.colors.controlBackground);
  painting.painter.drawRoundedRect(box(), codeCornerRadius, codeCornerRadius);
}

}  // namespace lumiwren
