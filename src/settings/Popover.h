#pragma once

#include "base/Handle.h"
#include "platform/PanelWindows.h"
#include "ui/PanelShadow.h"

#include <QMargins>
#include <QPoint>
#include <QSize>
#include <QWidget>

namespace lumiwren {

/// A small window that hangs at a place of the screen, above everything, until the user acts elsewhere or
/// presses Escape. It has the keyboard meanwhile. Where a compositor runs its corners are round and it has a
/// shadow, for which the window is larger than the popover. Main thread.
class Popover : public QWidget {
  Q_OBJECT

public:
  /// Takes the view over. `contentSize` is what the popover shows at least; its height grows to what the view
  /// needs, within the screen.
  Popover(QWidget *contentView, QSize contentSize, PanelWindows &panelWindows);

  bool isShown() const { return isShown_; }
  /// Shows the popover beside a point of the desktop, below it where there is room.
  void showAt(QPoint anchor);
  /// Gives the keyboard back to whoever had it, and hides the popover.
  void performClose();
  /// The same, because the user acts elsewhere.
  void dismiss();

Q_SIGNALS:
  void dismissed();

protected:
  void changeEvent(QEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  static constexpr double cornerRadius = 8;

  /// Puts the window where the popover hangs at `anchor_`.
  void place();
  void setForm();

  QWidget *const contentView_;
  const QSize contentSize_;
  PanelWindows &panelWindows_;
  const Handle compositor_;
  PanelShadow shadow_{cornerRadius};
  QMargins margins_;  // between the window's edges and the popover's
  QPoint anchor_;
  bool isShown_ = false;
};

}  // namespace lumiwren
