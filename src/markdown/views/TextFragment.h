#pragma once

#include "markdown/views/FragmentText.h"
#include "markdown/views/Recent.h"
#include "ui/Palette.h"

#include <QColor>
#include <QPainter>
#include <QPointF>
#include <QRectF>
#include <QTextLayout>

#include <memory>
#include <vector>

namespace lumiwren {

/// What texts are painted with.
struct FragmentPainting {
  QPainter &painter;
  const SemanticColors &colors;
  QRectF exposed;
  /// The selected part, in positions of what is painted; nothing when equal.
  int selectionStart = 0;
  int selectionEnd = 0;

  /// The same for a part that stands at `place` and begins at position `start`.
  FragmentPainting forPart(QPointF place, int start) const {
    return {painter, colors, exposed.translated(-place), selectionStart - start, selectionEnd - start};
  }
};

/// One text, laid out. Long ones are laid out in pieces, of which only those that are looked at are kept, and
/// of a text that grows only the last one is laid out again: the toolkit's own layout takes a time that grows
/// with the square of a text without spaces.
class TextFragment {
public:
  enum class Wrapping { Wrap, None };

  explicit TextFragment(Wrapping wrapping = Wrapping::Wrap) : wrapping_(wrapping) {}
  TextFragment(TextFragment &&) noexcept = default;
  TextFragment &operator=(TextFragment &&) noexcept = default;

  void setText(FragmentText text);
  const QString &text() const { return text_.text; }
  int length() const { return static_cast<int>(text_.text.size()); }

  /// Lays out what is not laid out for `width` yet; returns the height, which is whole.
  qreal layOut(qreal width);
  qreal height() const { return height_; }
  /// The width of the longest line.
  qreal naturalWidth() const { return naturalWidth_; }

  /// Where the text stands in its row; nothing here depends on it but rect().
  void place(QPointF position) { position_ = position; }
  QPointF position() const { return position_; }
  QRectF rect() const { return {position_, QSizeF(width_, height_)}; }

  // Below, points are relative to the text's own place, and positions to its beginning.

  void paint(const FragmentPainting &painting, const QColor &color);
  int positionAt(QPointF point);
  QRectF characterRect(int position);
  /// The link under a point; null where there is none.
  const FragmentText::Link *linkAt(QPointF point);

private:
  struct Piece {
    int start;
    int end;
    int lookedTo;  // how far the text was looked at to find the end
    QRectF rect;
    qreal naturalWidth;
    std::unique_ptr<QTextLayout> layout;
  };

  std::unique_ptr<QTextLayout> makeLayout(int start, int end) const;
  void addPiece(int start);
  /// Of the pieces only those that were looked at last keep their layout.
  void keepRecent(std::size_t index);
  QTextLayout &layoutOf(std::size_t index);
  std::size_t pieceAt(QPointF point) const;
  std::size_t pieceOf(int position) const;

  Wrapping wrapping_;
  FragmentText text_;
  bool isRightToLeft_ = false;  // as the first letter says that has a direction
  std::vector<Piece> pieces_;
  Recent recent_{8};  // pieces that have a layout
  QPointF position_;
  qreal width_ = -1;
  qreal height_ = 0;
  qreal naturalWidth_ = 0;
};

}  // namespace lumiwren
