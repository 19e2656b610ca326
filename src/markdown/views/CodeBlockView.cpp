#include "markdown/views/CodeBlockView.h"

#include "ui/Fonts.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <variant>

namespace lumiwren {
namespace {

constexpr qreal partSpacing = 4;
constexpr qreal padding = 8;
constexpr qreal cornerRadius = 6;
constexpr qreal thumbHeight = 3;
constexpr int labelFontSize = 10;
constexpr int codeFontSize = 12;

bool isLabelled(const std::string &language) {
  const auto &hidden = MarkdownCodeBlock::hiddenLanguages;
  return std::find(hidden.begin(), hidden.end(), language) == hidden.end();
}

}  // namespace

bool CodeBlockView::setBlock(const MarkdownBlock &block, const SemanticColors & /*colors*/) {
  const auto *code = std::get_if<MarkdownCodeBlock>(&block);
  if (!code) {
    return false;
  }
  std::size_t count = 0;
  hasLabel_ = isLabelled(code->language);
  if (hasLabel_) {
    fragment(count++).setText(FragmentText::plain(code->language, systemFont(labelFontSize, QFont::Medium)));
  }
  const QFont font = monospacedSystemFont(codeFontSize);
  std::string_view rest = code->code;
  while (true) {
    const auto end = rest.find('\n');
    auto line = rest.substr(0, end);
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
    }
    auto &shown = fragment(count++);
    shown.setSeparator(QStringLiteral("\n"));
    shown.setText(FragmentText::plain(line, font));
    if (end == std::string_view::npos) {
      break;
    }
    rest.remove_prefix(end + 1);
  }
  setFragmentCount(count);
  return true;
}

qreal CodeBlockView::layOut(qreal width) {
  qreal y = 0;
  std::size_t index = 0;
  if (hasLabel_) {
    auto &label = fragment(index++);
    y = label.layOut(width) + partSpacing;
    label.place({0, 0});
  }
  longestLine_ = 0;
  qreal height = 2 * padding;
  for (; index < fragments().size(); ++index) {
    auto &line = fragment(index);
    height += line.layOut(width - 2 * padding, TextFragment::Wrapping::None);
    longestLine_ = std::max(longestLine_, std::ceil(line.naturalWidth()));
  }
  box_ = QRectF(0, y, width, height);
  setScrollOffset(scrollOffset_);
  return box_.bottom();
}

void CodeBlockView::placeLines() {
  qreal y = box_.top() + padding;
  for (std::size_t index = hasLabel_ ? 1 : 0; index < fragments().size(); ++index) {
    auto &line = fragment(index);
    line.place({padding - scrollOffset_, y});
    y += line.height();
  }
}

qreal CodeBlockView::scrollRange() const {
  return std::max(0.0, longestLine_ + 2 * padding - box_.width());
}

void CodeBlockView::setScrollOffset(qreal offset) {
  scrollOffset_ = std::clamp(offset, 0.0, scrollRange());
  placeLines();
}

void CodeBlockView::paint(const FragmentPainting &painting) const {
  auto &painter = painting.painter;
  auto line = fragments().begin();
  if (hasLabel_) {
    (*line++)->paint(painting, painting.colors.secondary);
  }
  painter.setPen(Qt::NoPen);
  painter.setBrush(painting.colors.controlBackground);
  painter.drawRoundedRect(box_, cornerRadius, cornerRadius);
  painter.save();
  // Code that is scrolled ends at the padding on neither side, but never outside the box.
  painter.setClipRect(box_.adjusted(1, 0, -1, 0), Qt::IntersectClip);
  for (; line != fragments().end(); ++line) {
    (*line)->paint(painting, painting.colors.primary);
  }
  painter.restore();
  if (const qreal range = scrollRange(); range > 0) {
    const qreal track = box_.width() - 2 * padding;
    const qreal length = std::max(24.0, track * box_.width() / (box_.width() + range));
    painter.setPen(Qt::NoPen);
    painter.setBrush(withOpacity(painting.colors.primary, 0.25));
    painter.drawRoundedRect(QRectF(padding + (track - length) * scrollOffset_ / range,
                                   box_.bottom() - thumbHeight - 2, length, thumbHeight),
                            thumbHeight / 2, thumbHeight / 2);
  }
}

}  // namespace lumiwren
