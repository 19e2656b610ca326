#include "markdown/views/BlockView.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace lumiwren {
namespace {

constexpr qreal shortestThumb = 24;
constexpr qreal thumbMargin = 2;

qreal distance(qreal value, qreal low, qreal high) {
  return value < low ? low - value : value > high ? value - high : 0;
}

}  // namespace

void BlockView::rowsChanged(std::size_t first) {
  firstChanged_ = std::min(firstChanged_, first);
  for (std::size_t row = first; row < rows_.size(); ++row) {
    rows_[row].isCurrent = false;
  }
}

bool BlockView::layOut(qreal width, const SemanticColors &colors, std::size_t &budget) {
  if (width_ != width) {
    width_ = width;
    rowsChanged(0);
  }
  changedFrom_ = height_;
  if (firstChanged_ == none) {
    return true;
  }
  const std::size_t first = std::min(prepareRows(firstChanged_), rows_.size());
  rowsChanged(first);
  rows_.resize(rowCount());
  firstChanged_ = none;
  for (std::size_t index = first; index < rows_.size(); ++index) {
    auto &row = rows_[index];
    row.top = (index > 0 ? rows_[index - 1].bottom() : 0) + gapAbove(index);
    row.start = index > 0 ? rows_[index - 1].start + rows_[index - 1].length + 1 : 0;
    if (const auto extent = knownExtent(index)) {
      row.height = extent->height;
      row.length = extent->length;
    } else if (budget > 0) {
      --budget;
      textsOf(index, colors);
    } else {
      rows_.resize(index);
      firstChanged_ = index;
    }
  }
  changedFrom_ = first > 0 ? rows_[first - 1].bottom() : 0;
  height_ = std::ceil(rows_.empty() ? 0 : rows_.back().bottom() + bottomPadding());
  setScrollOffset(scrollOffset_);
  return firstChanged_ == none;
}

std::vector<TextFragment> &BlockView::textsOf(std::size_t index, const SemanticColors &colors) {
  auto &row = rows_[index];
  if (!row.texts) {
    row.texts = std::make_unique<std::vector<TextFragment>>();
    row.isCurrent = false;
    isLetGo_ = false;
    recent_.add(index, [this](std::size_t old) {
      if (old < rows_.size()) {
        rows_[old].texts.reset();
      }
    });
  }
  if (!row.isCurrent) {
    fill(index, *row.texts, colors);
    row.height = arrange(index, *row.texts);
    row.length = static_cast<int>(row.texts->size()) - 1;
    for (const auto &text : *row.texts) {
      row.length += text.length();
    }
    row.isCurrent = true;
  }
  return *row.texts;
}

void BlockView::letGo() {
  for (auto &row : rows_) {
    row.texts.reset();
  }
  recent_.clear();
  isLetGo_ = true;
}

QString BlockView::plainText() const {
  QString text;
  for (std::size_t index = 0; index < rows_.size(); ++index) {
    if (index > 0) {
      text += QLatin1Char('\n');
    }
    text += rowText(index);
  }
  return text;
}

std::size_t BlockView::rowAt(qreal y) const {
  const auto after =
      std::partition_point(rows_.begin(), rows_.end(), [y](const Row &row) { return row.bottom() <= y; });
  return static_cast<std::size_t>(std::min(after, rows_.end() - 1) - rows_.begin());
}

QPointF BlockView::origin(std::size_t row) const {
  return {isScrolled(row) ? -scrollOffset_ : 0, rows_[row].top};
}

void BlockView::paint(const FragmentPainting &painting) {
  auto &painter = painting.painter;
  paintBelow(painting);
  painter.save();
  bool needsClip = scrollRange() > 0;
  for (std::size_t index = rows_.empty() ? 0 : rowAt(painting.exposed.top());
       index < rows_.size() && rows_[index].top < painting.exposed.bottom(); ++index) {
    if (needsClip && isScrolled(index)) {
      // For good: what is not scrolled comes first.
      painter.setClipRect(scrollPort(), Qt::IntersectClip);
      needsClip = false;
    }
    int start = rows_[index].start;
    for (auto &text : textsOf(index, painting.colors)) {
      const QPointF place = origin(index) + text.position();
      const auto part = painting.forPart(place, start);
      if (part.exposed.left() < std::max(text.rect().width(), text.naturalWidth()) &&
          part.exposed.right() > 0) {
        painter.translate(place);
        text.paint(part, color(index, painting.colors));
        painter.translate(-place);
      }
      start += text.length() + 1;
    }
  }
  painter.restore();
  paintAbove(painting);
  if (const QRectF thumb = scrollThumb(); !thumb.isEmpty()) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(withOpacity(painting.colors.primary, 0.3));
    painter.drawRoundedRect(thumb, thumb.height() / 2, thumb.height() / 2);
  }
}

int BlockView::positionAt(QPointF point, const SemanticColors &colors) {
  if (rows_.empty()) {
    return 0;
  }
  const auto index = rowAt(point.y());
  const QPointF local = point - origin(index);
  TextFragment *nearest = nullptr;
  int nearestStart = 0;
  qreal least = std::numeric_limits<qreal>::max();
  int start = rows_[index].start;
  for (auto &text : textsOf(index, colors)) {
    const qreal away = distance(local.x(), text.rect().left(), text.rect().right());
    if (away < least) {
      nearest = &text;
      nearestStart = start;
      least = away;
    }
    start += text.length() + 1;
  }
  return nearest ? nearestStart + nearest->positionAt(local - nearest->position()) : rows_[index].start;
}

QRectF BlockView::characterRect(int position, const SemanticColors &colors) {
  if (rows_.empty()) {
    return {};
  }
  const auto after = std::partition_point(
      rows_.begin(), rows_.end(), [position](const Row &row) { return row.start + row.length < position; });
  const auto index = static_cast<std::size_t>(std::min(after, rows_.end() - 1) - rows_.begin());
  int start = rows_[index].start;
  for (auto &text : textsOf(index, colors)) {
    if (position <= start + text.length()) {
      return text.characterRect(std::max(0, position - start)).translated(origin(index) + text.position());
    }
    start += text.length() + 1;
  }
  return {};
}

const FragmentText::Link *BlockView::linkAt(QPointF point, const SemanticColors &colors) {
  if (rows_.empty() || point.y() < 0 || point.y() >= height_) {
    return nullptr;
  }
  const auto index = rowAt(point.y());
  const QPointF local = point - origin(index);
  for (auto &text : textsOf(index, colors)) {
    if (text.rect().contains(local)) {
      return text.linkAt(local - text.position());
    }
  }
  return nullptr;
}

qreal BlockView::scrollRange() const {
  return std::max(0.0, std::ceil(contentWidth() - width_));
}

void BlockView::setScrollOffset(qreal offset) {
  scrollOffset_ = std::clamp(offset, 0.0, scrollRange());
}

QRectF BlockView::scrollThumb() const {
  const qreal range = scrollRange();
  if (range <= 0) {
    return {};
  }
  const QRectF port = scrollPort();
  const qreal track = port.width() - 2 * thumbMargin;
  const qreal length = std::min(track, std::max(shortestThumb, track * width_ / (width_ + range)));
  return {port.left() + thumbMargin + (track - length) * scrollOffset_ / range,
          port.bottom() - thumbHeight - thumbMargin, length, thumbHeight};
}

qreal BlockView::scrollOffsetFor(qreal moved) const {
  const qreal free = scrollPort().width() - 2 * thumbMargin - scrollThumb().width();
  return free > 0 ? moved * scrollRange() / free : 0;
}

}  // namespace lumiwren
