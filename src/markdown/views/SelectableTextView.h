#pragma once

#include "markdown/views/BlockView.h"

#include <QPoint>
#include <QString>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

namespace lumiwren {

/// Blocks of text stacked, as one text that can be selected with the mouse, copied, and read by assistive
/// technology. As high as it needs to be at the width that it has; laid out block by block, and again only
/// where something has changed.
class SelectableTextView : public QWidget {
  Q_OBJECT

public:
  explicit SelectableTextView(QWidget *parent = nullptr);
  ~SelectableTextView() override;

  /// What is shown, without markup: the blocks on lines of their own, cells separated by tabs.
  QString plainText() const;
  /// The height at a width; lays out for it.
  int layOut(int width);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;

  QString selectedText() const;
  void selectAll();
  /// Puts what is selected on the clipboard.
  void copy() const;

  /// Positions count UTF-16 units of plainText().
  int positionAt(QPoint point) const;
  QRect characterRect(int position) const;
  int selectionStart() const;
  int selectionEnd() const;
  void setSelection(int start, int end);

protected:
  /// For a derived view to change. It then calls blocksChanged() with the first one that differs.
  std::vector<std::unique_ptr<BlockView>> &blocks() { return views_; }
  void blocksChanged(std::size_t first);

  bool event(QEvent *event) override;
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
  std::optional<std::size_t> blockAt(qreal y) const;
  const FragmentText::Link *linkAt(QPoint point) const;
  void tellAssistiveTechnology();
  void scrollBlock(std::size_t index, qreal delta);

  std::vector<std::unique_ptr<BlockView>> views_;
  std::vector<qreal> tops_;  // of each block
  QString told_;             // what assistive technology was told last, where there is any
  qreal width_ = -1;
  qreal height_ = 0;
  int anchor_ = 0;  // where the selection began, and where it has come to
  int cursor_ = 0;
  bool selecting_ = false;
  QString pressedLink_;
};

}  // namespace lumiwren
