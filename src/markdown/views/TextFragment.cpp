#include "markdown/views/TextFragment.h"

#include "markdown/views/Emoji.h"

#include <QFontMetricsF>
#include <QTextBoundaryFinder>
#include <QTextCharFormat>
#include <QTextOption>

#include <algorithm>
#include <cmath>
#include <utility>

namespace lumiwren {
namespace {

constexpr int tabWidth = 4;  // in spaces
constexpr qreal unlimitedWidth = 1 << 20;
constexpr int pieceLength = 2048;  // in UTF-16 units; laid out in half a millisecond

/// A place not far before `end` at which a line that is not wrapped can be cut without a trace.
int seam(const QString &text, int start, int end) {
  const int searched = std::max(start + 1, end - 256);
  for (int at = end; at > searched; --at) {
    if (text[at - 1] == QLatin1Char(' ')) {
      return at;
    }
  }
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, QStringView(text).mid(searched, end - searched));
  finder.toEnd();
  const auto boundary = finder.toPreviousBoundary();
  return boundary > 0 ? searched + static_cast<int>(boundary) : end;
}

QTextLine lineAt(const QTextLayout &layout, qreal y) {
  for (int index = 0; index + 1 < layout.lineCount(); ++index) {
    if (y < layout.lineAt(index + 1).y()) {
      return layout.lineAt(index);
    }
  }
  return layout.lineAt(layout.lineCount() - 1);
}

}  // namespace

void TextFragment::setText(FragmentText text) {
  const int common = text_.commonStart(text);
  if (common == text_.text.size() && common == text.text.size()) {
    text_.links = std::move(text.links);
    return;
  }
  // The last piece may have ended for no other reason than the text's end.
  while (!pieces_.empty() && (pieces_.back().lookedTo > common || pieces_.back().end == length())) {
    pieces_.pop_back();
  }
  text_ = std::move(text);
  const bool rightToLeft = wrapping_ == Wrapping::Wrap && text_.text.isRightToLeft();
  if (rightToLeft != isRightToLeft_) {
    isRightToLeft_ = rightToLeft;
    pieces_.clear();
  }
}

std::unique_ptr<QTextLayout> TextFragment::makeLayout(int start, int end) const {
  QTextOption option;
  option.setTabStopDistance(tabWidth * QFontMetricsF(text_.font).horizontalAdvance(QLatin1Char(' ')));
  option.setWrapMode(wrapping_ == Wrapping::Wrap ? QTextOption::WrapAtWordBoundaryOrAnywhere
                                                 : QTextOption::NoWrap);
  option.setAlignment(isRightToLeft_ ? Qt::AlignRight : Qt::AlignLeft);
  option.setTextDirection(isRightToLeft_ ? Qt::RightToLeft : Qt::LeftToRight);
  auto layout = std::make_unique<QTextLayout>(text_.text.mid(start, end - start), text_.font);
  QList<QTextLayout::FormatRange> formats;
  auto format = std::partition_point(text_.formats.begin(), text_.formats.end(),
                                     [start](const auto &each) { return each.start + each.length <= start; });
  for (; format != text_.formats.end() && format->start < end; ++format) {
    formats.push_back({format->start - start, format->length, format->format});
  }
  const auto emoji = emojiRanges(layout->text());
  if (!emoji.empty() && !emojiFontFamily().isEmpty()) {
    // Else one emoji may come from several fonts, in parts.
    QTextCharFormat emojiFormat;
    emojiFormat.setFontFamilies({emojiFontFamily()});
    for (const auto &range : emoji) {
      formats.push_back({range.start, range.length, emojiFormat});
    }
  }
  layout->setFormats(formats);
  layout->setTextOption(option);
  layout->setCacheEnabled(true);
  qreal y = 0;
  layout->beginLayout();
  for (auto line = layout->createLine(); line.isValid(); line = layout->createLine()) {
    line.setLineWidth(wrapping_ == Wrapping::Wrap ? width_ : unlimitedWidth);
    line.setPosition({0, y});
    y += std::ceil(line.height());
  }
  layout->endLayout();
  return layout;
}

void TextFragment::addPiece(int start) {
  int window = pieceLength;
  while (true) {
    const int lookedTo = std::min(length(), start + window);
    const bool isLast = lookedTo == length();
    const int cut = wrapping_ == Wrapping::None && !isLast ? seam(text_.text, start, lookedTo) : lookedTo;
    auto layout = makeLayout(start, cut);
    int lines = layout->lineCount();
    if (wrapping_ == Wrapping::Wrap && !isLast) {
      // Where the last line ends depends on what follows; it begins the next piece.
      --lines;
      if (lines == 0) {
        window *= 2;
        continue;
      }
    }
    Piece piece{
        .start = start, .end = cut, .lookedTo = lookedTo, .rect = {}, .naturalWidth = 0, .layout = {}};
    const qreal before = pieces_.empty()               ? 0
                         : wrapping_ == Wrapping::Wrap ? pieces_.back().rect.bottom()
                                                       : pieces_.back().rect.right();
    qreal height = 0;
    for (int index = 0; index < lines; ++index) {
      const auto line = layout->lineAt(index);
      height += std::ceil(line.height());
      piece.naturalWidth = std::max(piece.naturalWidth, line.naturalTextWidth());
    }
    if (wrapping_ == Wrapping::Wrap) {
      piece.rect = QRectF(0, before, width_, height);
      if (!isLast) {
        piece.end = start + layout->lineAt(lines).textStart();
        layout.reset();  // It holds a line too many.
      }
    } else {
      piece.rect =
          QRectF(before, 0, isLast ? piece.naturalWidth : layout->lineAt(0).horizontalAdvance(), height);
    }
    piece.layout = std::move(layout);
    pieces_.push_back(std::move(piece));
    if (pieces_.back().layout) {
      keepRecent(pieces_.size() - 1);
    }
    return;
  }
}

qreal TextFragment::layOut(qreal width) {
  width = std::max(width, 1.0);
  if (width_ != width) {
    width_ = width;
    if (wrapping_ == Wrapping::Wrap) {
      pieces_.clear();
    }
  }
  if (!pieces_.empty() && pieces_.back().end == length()) {
    return height_;
  }
  do {
    addPiece(pieces_.empty() ? 0 : pieces_.back().end);
  } while (pieces_.back().end < length());
  height_ = 0;
  naturalWidth_ = 0;
  for (const auto &piece : pieces_) {
    height_ = std::max(height_, piece.rect.bottom());
    naturalWidth_ = wrapping_ == Wrapping::Wrap ? std::max(naturalWidth_, piece.naturalWidth)
                                                : piece.rect.left() + piece.naturalWidth;
  }
  return height_;
}

void TextFragment::keepRecent(std::size_t index) {
  recent_.add(index, [this](std::size_t old) {
    if (old < pieces_.size()) {
      pieces_[old].layout.reset();
    }
  });
}

QTextLayout &TextFragment::layoutOf(std::size_t index) {
  auto &piece = pieces_[index];
  if (!piece.layout) {
    piece.layout = makeLayout(piece.start, piece.end);
    keepRecent(index);
  }
  return *piece.layout;
}

std::size_t TextFragment::pieceAt(QPointF point) const {
  const auto after = std::partition_point(pieces_.begin(), pieces_.end(), [this, point](const Piece &piece) {
    return wrapping_ == Wrapping::Wrap ? piece.rect.bottom() <= point.y() : piece.rect.right() <= point.x();
  });
  return static_cast<std::size_t>(std::min(after, pieces_.end() - 1) - pieces_.begin());
}

std::size_t TextFragment::pieceOf(int position) const {
  const auto after = std::partition_point(pieces_.begin(), pieces_.end(),
                                          [position](const Piece &piece) { return piece.end <= position; });
  return static_cast<std::size_t>(std::min(after, pieces_.end() - 1) - pieces_.begin());
}

void TextFragment::paint(const FragmentPainting &painting, const QColor &color) {
  painting.painter.setPen(color);
  for (std::size_t index = pieceAt(painting.exposed.topLeft()); index < pieces_.size(); ++index) {
    const auto &piece = pieces_[index];
    if (!piece.rect.intersects(painting.exposed)) {
      break;
    }
    QList<QTextLayout::FormatRange> selections;
    const int from = std::max(painting.selectionStart, piece.start);
    const int to = std::min(painting.selectionEnd, piece.end);
    if (from < to) {
      QTextCharFormat format;
      format.setBackground(withOpacity(painting.colors.selection, 0.4));
      selections.push_back({from - piece.start, to - from, format});
    }
    layoutOf(index).draw(&painting.painter, piece.rect.topLeft(), selections, painting.exposed);
  }
}

int TextFragment::positionAt(QPointF point) {
  const auto index = pieceAt(point);
  const auto local = point - pieces_[index].rect.topLeft();
  const auto line = lineAt(layoutOf(index), local.y());
  return pieces_[index].start + (line.isValid() ? line.xToCursor(local.x()) : 0);
}

QRectF TextFragment::characterRect(int position) {
  const auto index = pieceOf(position);
  const int offset = position - pieces_[index].start;
  const auto line = layoutOf(index).lineForTextPosition(offset);
  const QPointF origin = pieces_[index].rect.topLeft();
  if (!line.isValid()) {
    return {origin, QSizeF(0, pieces_[index].rect.height())};
  }
  const qreal from = line.cursorToX(offset);
  const qreal to = line.cursorToX(offset + 1);
  return {origin + QPointF(std::min(from, to), line.y()), QSizeF(std::abs(to - from), line.height())};
}

const FragmentText::Link *TextFragment::linkAt(QPointF point) {
  if (text_.links.empty()) {
    return nullptr;
  }
  const auto index = pieceAt(point);
  const auto local = point - pieces_[index].rect.topLeft();
  const auto line = lineAt(layoutOf(index), local.y());
  if (!line.isValid() || !line.naturalTextRect().contains(local)) {
    return nullptr;
  }
  const int offset = pieces_[index].start + line.xToCursor(local.x(), QTextLine::CursorOnCharacter);
  const auto found = std::find_if(text_.links.begin(), text_.links.end(), [offset](const auto &link) {
    return offset >= link.start && offset < link.start + link.length;
  });
  return found == text_.links.end() ? nullptr : &*found;
}

}  // namespace lumiwren
