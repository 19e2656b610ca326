#pragma once

#include "markdown/MarkdownInline.h"
#include "ui/Palette.h"

#include <QColor>
#include <QFont>
#include <QList>
#include <QPainter>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QTextLayout>

#include <string_view>
#include <vector>

namespace lumiwren {

/// A text and how it looks, apart from its place and its main colour.
struct FragmentText {
  struct Link {
    int start;
    int length;
    QString address;
    bool operator==(const Link &) const = default;
  };

  QString text;
  QFont font;
  QList<QTextLayout::FormatRange> formats = {};
  std::vector<Link> links = {};
  bool operator==(const FragmentText &) const = default;

  static FragmentText plain(std::string_view text, const QFont &font);
  /// With the line's inline Markdown applied; `font` is that of unstyled text. Links whose address is safe
  /// to open (http, https, mailto) are links, others are text.
  static FragmentText styled(std::string_view line, const QFont &font, const SemanticColors &colors);
};

/// What fragments are painted with.
struct FragmentPainting {
  QPainter &painter;
  SemanticColors colors;
  QRectF exposed;
  /// The selected part of the whole answer's plain text, see TextFragment::start; empty when equal.
  int selectionStart = 0;
  int selectionEnd = 0;
};

/// One text of a block, laid out and placed. Fragments are the units of selection too: an answer's plain text
/// is the texts of its fragments in order, each after its separator.
class TextFragment {
public:
  enum class Wrapping { Wrap, None };

  /// Keeps the layout when nothing differs, which is what makes a streamed answer cheap. True when it does.
  bool setText(FragmentText text);
  void setSeparator(const QString &separator) { separator_ = separator; }
  void setAlignment(Qt::Alignment alignment) { alignment_ = alignment; }
  /// What stands before this text in the plain text; nothing before the first one.
  const QString &separator() const { return separator_; }
  const QString &text() const { return text_.text; }

  /// Lays out for `width`, unless it is laid out for it; returns the height.
  qreal layOut(qreal width, Wrapping wrapping = Wrapping::Wrap);
  void place(QPointF position) { position_ = position; }
  qreal height() const { return height_; }
  /// The width of the longest line.
  qreal naturalWidth() const { return naturalWidth_; }
  QRectF rect() const { return {position_, QSizeF(width_, height_)}; }

  /// Where this text begins in the answer's plain text, in UTF-16 units.
  int start() const { return start_; }
  int end() const { return start_ + static_cast<int>(text_.text.size()); }
  void setStart(int start) { start_ = start; }

  void paint(const FragmentPainting &painting, const QColor &color) const;

  /// The position within the plain text nearest to a point of the block.
  int positionAt(QPointF point) const;
  /// The rectangle of the character at a position of the plain text.
  QRectF characterRect(int position) const;
  /// The link under a point; null where there is none.
  const FragmentText::Link *linkAt(QPointF point) const;

private:
  QTextLine lineAt(qreal y) const;

  FragmentText text_;
  QString separator_;
  QTextLayout layout_;
  Qt::Alignment alignment_ = Qt::AlignLeft;
  QPointF position_;
  qreal width_ = -1;
  qreal height_ = 0;
  qreal naturalWidth_ = 0;
  int start_ = 0;
};

}  // namespace lumiwren
