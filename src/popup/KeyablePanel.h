#pragma once

#include "base/Handle.h"
#include "platform/Geometry.h"
#include "platform/PanelWindows.h"
#include "ui/PanelShadow.h"

#include <QMargins>
#include <QPoint>
#include <QRect>
#include <QWidget>

#include <memory>
#include <optional>

namespace lumiwren {

class ResizeFrame;

/// A floating panel: above everything, on every desktop, and without the keyboard until something in it asks
/// for that. Moved by its background, resized by its edges. Made once and shown many times; each showing is
/// that of a new panel. Where a compositor runs it has a shadow, for which its window is larger than the
/// panel by a margin; places and sizes are the panel's, unless they are said to be the window's. Where none
/// runs, or it ends, the panel is opaque and its corners are cut.
class KeyablePanel : public QWidget {
  Q_OBJECT

public:
  static constexpr Size defaultSize{400, 300};
  static constexpr Size minimumPanelSize{300, 200};
  static constexpr Size maximumPanelSize{800, 600};
  static constexpr double cornerRadius = 12;

  KeyablePanel(PanelWindows &panelWindows, std::unique_ptr<QWidget> contentView);
  ~KeyablePanel() override;

  /// Whether the panel may have the keyboard. False at each showing, and until makeKey().
  bool allowsKeyStatus() const { return allowsKeyStatus_; }
  bool canBecomeKey() const { return allowsKeyStatus_; }
  bool canBecomeMain() const { return false; }
  /// Lets the panel have the keyboard, and takes it.
  void makeKey();

  /// In desktop coordinates (Geometry.h), as the display server has it.
  Rect frame();
  void setFrame(const Rect &frame);

  /// Shows the panel in front of everything and takes the keyboard from nobody.
  void orderFrontRegardless();
  /// Gives the keyboard back to whoever had it, and hides the panel.
  void orderOut();
  /// Whether what is below shines through.
  bool isTranslucent() const { return isTranslucent_; }
  /// Where the panel is in its window.
  QRect panelRect() const { return rect().marginsRemoved(margins_); }

protected:
  void paintEvent(QPaintEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mouseReleaseEvent(QMouseEvent *event) override;

private:
  void followCompositor();
  void setLook(bool isTranslucent);
  void arrange();
  void updateForm(QSize windowSize);
  void letGo();

  PanelWindows &panelWindows_;
  QWidget *contentView_;
  ResizeFrame *resizeFrame_;
  bool allowsKeyStatus_ = false;
  bool isTranslucent_ = false;
  QMargins margins_;  // between the window's edges and the panel's
  PanelShadow shadow_{cornerRadius};
  WindowForm form_;  // the window's, as the session knows it

  /// Where the pointer took hold of the panel to move it, and where the window was.
  struct Grip {
    QPointF pointer;
    QPoint window;
  };
  std::optional<Grip> grip_;
  Handle compositor_;
};

}  // namespace lumiwren
