#pragma once

#include "markdown/views/BlockView.h"

#include <QElapsedTimer>
#include <QPoint>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

namespace lumiwren {

/// Blocks of text stacked, as one text that can be selected with the mouse, copied, and read by assistive
/// technology. As high as it needs to be at the width that it has; laid out again only where something has
/// changed. Of a text that is very long when it comes, only the beginning is there at once; the rest follows
/// part by part, so that the program stays responsive.
class SelectableTextView : public QWidget {
  Q_OBJECT

public:
  explicit SelectableTextView(QWidget *parent = nullptr);
  ~SelectableTextView() override;

  /// What is shown, without markup: the blocks on lines of their own, cells separated by tabs.
  QString plainText() const { return plainTextFrom(0); }
  /// The same from a position on; costs no more than that part.
  QString plainTextFrom(int position) const;
  /// Of plainText(), in UTF-16 units, as all positions.
  int length() const;
  /// Whether all of the text is there; else the rest follows, with a grown() for each part.
  bool isComplete() const { return !rest_.isActive(); }
  /// The height at a width; lays out for it.
  int layOut(int width);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;

  QString selectedText() const;
  bool hasSelection() const { return anchor_ != cursor_; }
  int selectionStart() const;
  int selectionEnd() const;
  void setSelection(int start, int end);
  void clearSelection() { setSelection(0, 0); }
  void selectAll();
  /// Asks for the selected text to be put on the clipboard; does nothing when there is none.
  void copy();

  /// Lets the selection end at a point, wherever that is.
  void dragTo(QPoint point);
  /// Tells assistive technology of what has changed in the text up to a position; of the rest it is told
  /// nothing before it asks.
  void tellAssistiveTechnology(int upTo);

  int positionAt(QPoint point) const;
  QRect characterRect(int position) const;

Q_SIGNALS:
  /// More of a long text is laid out: the view needs more height.
  void grown();
  void copyRequested(const QString &text);
  /// A selection has begun here.
  void selectionStarted();
  /// The pointer moves while it selects; in global coordinates.
  void selectionDragged(QPoint pointer);
  void selectionEnded();

protected:
  /// For a derived view to change. It then calls blocksChanged() with the first one that differs.
  std::vector<std::unique_ptr<BlockView>> &blocks() { return views_; }
  void blocksChanged(std::size_t first);

  bool event(QEvent *event) override;
  void changeEvent(QEvent *event) override;
  void paintEvent(QPaintEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mouseReleaseEvent(QMouseEvent *event) override;
  void mouseDoubleClickEvent(QMouseEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void wheelEvent(QWheelEvent *event) override;
  void contextMenuEvent(QContextMenuEvent *event) override;

private:
  /// A block's handle that the pointer holds, to scroll the block sideways.
  struct HeldThumb {
    std::size_t block;
    qreal pointer;
    qreal offset;
  };

  std::optional<std::size_t> blockAt(qreal y) const;
  std::size_t blockOf(int position) const;
  const FragmentText::Link *linkAt(QPoint point) const;
  std::optional<std::size_t> thumbAt(QPoint point) const;
  void selectLineAt(int position);
  void publishSelection() const;
  /// Lays out from a block on, as many rows as the budget allows.
  void layOutBlocks(std::size_t first, std::size_t budget);
  /// Of a long text only the blocks that were looked at last keep what is laid out.
  void keepRecent(std::size_t index);
  void scrollBlock(std::size_t index, qreal offset);

  std::vector<std::unique_ptr<BlockView>> views_;
  std::vector<qreal> tops_;  // of each block that is laid out, if only in part
  std::vector<int> starts_;  // likewise, of each in the plain text
  Recent recent_{256};       // blocks that are not let go
  SemanticColors colors_;
  QString told_;  // what assistive technology was told of
  qreal width_ = -1;
  qreal height_ = 0;
  int anchor_ = 0;  // where the selection began, and where it has come to
  int cursor_ = 0;
  bool isSelecting_ = false;
  std::optional<HeldThumb> heldThumb_;
  QTimer rest_;  // runs while there is more to lay out
  QElapsedTimer sinceDoubleClick_;
  QPoint doubleClickedAt_;
  QString pressedLink_;
};

}  // namespace lumiwren
