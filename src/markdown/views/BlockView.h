#pragma once

#include "markdown/views/Recent.h"
#include "markdown/views/TextFragment.h"
#include "ui/Palette.h"

#include <QPointF>
#include <QRectF>
#include <QString>

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace lumiwren {

/// How one block of a text looks: rows of one or more texts below each other. Points are relative to the
/// block's top left corner, positions to the beginning of its plain text, in UTF-16 units: the texts of a row
/// after each other with a separator between, the rows on lines of their own.
///
/// What is laid out is let go again when many other rows have been since; a row's place and length stay
/// known. So a block costs memory for what is looked at, and a block that grows costs time for what is new.
class BlockView {
public:
  BlockView() = default;
  BlockView(const BlockView &) = delete;
  BlockView &operator=(const BlockView &) = delete;
  virtual ~BlockView() = default;

  /// Lays out what has changed since the last layout, or everything for another width. Stops when `budget`
  /// rows have had to be laid out, and takes from it; false when rows are left, which are not there before
  /// another call.
  bool layOut(qreal width, const SemanticColors &colors, std::size_t &budget);
  /// Looks everything up again: the colours or the fonts have changed.
  void restyle() { rowsChanged(0); }
  /// Lets go of all that is laid out; it is made again when it is looked at.
  void letGo();
  bool isLetGo() const { return isLetGo_; }
  /// In whole points, as of the last layout.
  qreal height() const { return height_; }
  /// Above this, nothing looks other than before the last change.
  qreal changedFrom() const { return changedFrom_; }
  int length() const { return rows_.empty() ? 0 : rows_.back().start + rows_.back().length; }
  QString plainText() const;

  void paint(const FragmentPainting &painting);
  int positionAt(QPointF point, const SemanticColors &colors);
  QRectF characterRect(int position, const SemanticColors &colors);
  /// The link under a point; null where there is none.
  const FragmentText::Link *linkAt(QPointF point, const SemanticColors &colors);

  /// By how much what is drawn can be moved to the left, for blocks wider than their place.
  qreal scrollRange() const;
  qreal scrollOffset() const { return scrollOffset_; }
  void setScrollOffset(qreal offset);
  /// The handle to scroll by; empty where there is nothing to scroll.
  QRectF scrollThumb() const;
  /// The offset that a handle moved by `distance` stands for.
  qreal scrollOffsetFor(qreal distance) const;

protected:
  static constexpr qreal thumbHeight = 3;

  struct RowExtent {
    qreal height;
    int length;
  };
  struct Row {
    qreal top = 0;
    qreal height = 0;
    int start = 0;
    int length = 0;
    std::unique_ptr<std::vector<TextFragment>> texts;
    bool isCurrent = false;  // texts are those of the row as it is

    qreal bottom() const { return top + height; }
  };

  /// Rows from this one on are others than before.
  void rowsChanged(std::size_t first);
  const std::vector<Row> &rows() const { return rows_; }
  qreal width() const { return width_; }
  /// The part of the block that is seen through, and scrolled sideways.
  virtual QRectF scrollPort() const { return {0, 0, width_, height_}; }
  /// The width of all that can be seen by scrolling.
  virtual qreal contentWidth() const { return width_; }
  /// The row at a height, or the one nearest to it, of those that there are.
  std::size_t rowAt(qreal y) const;

private:
  /// After prepareRows().
  virtual std::size_t rowCount() const = 0;
  /// What stands between a row and what is above it.
  virtual qreal gapAbove(std::size_t /*row*/) const { return 0; }
  /// Below the last row.
  virtual qreal bottomPadding() const { return 0; }
  /// Prepares for the rows from `first` on to be counted and laid out. May call for all of them by returning
  /// 0.
  virtual std::size_t prepareRows(std::size_t first) { return first; }
  /// The extent of a row, where it can be told without laying it out.
  virtual std::optional<RowExtent> knownExtent(std::size_t /*row*/) const { return std::nullopt; }
  /// The row's plain text: what fill() makes, with one character between texts.
  virtual QString rowText(std::size_t row) const = 0;
  /// Puts the row's texts into `texts`, which may hold those of the row as it was.
  virtual void fill(std::size_t row, std::vector<TextFragment> &texts,
                    const SemanticColors &colors) const = 0;
  /// Lays out and places the row's texts; returns the row's height.
  virtual qreal arrange(std::size_t row, std::vector<TextFragment> &texts) const = 0;
  virtual bool isScrolled(std::size_t /*row*/) const { return true; }
  virtual QColor color(std::size_t /*row*/, const SemanticColors &colors) const { return colors.primary; }
  virtual void paintBelow(const FragmentPainting & /*painting*/) const {}
  virtual void paintAbove(const FragmentPainting & /*painting*/) const {}

  std::vector<TextFragment> &textsOf(std::size_t row, const SemanticColors &colors);
  void noteLayout(std::size_t row);
  QPointF origin(std::size_t row) const;

  std::vector<Row> rows_;
  Recent recent_{128};  // rows that have texts
  bool isLetGo_ = true;
  static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
  std::size_t firstChanged_ = 0;  // row that is to be laid out
  qreal width_ = -1;
  qreal height_ = 0;
  qreal changedFrom_ = 0;
  qreal scrollOffset_ = 0;
};

}  // namespace lumiwren
