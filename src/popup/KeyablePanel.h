#pragma once

#include "platform/Geometry.h"
#include "platform/PanelWindows.h"

#include <QPoint>
#include <QWidget>

#include <memory>
#include <optional>

namespace lumiwren {

class ResizeFrame;

/// A floating panel: above everything, on every desktop, and without the keyboard until something in it asks
/// for that. Moved by its background, resized by its edges. Made once and shown many times; each showing is
/// that of a new panel.
class KeyablePanel : public QWidget {
  Q_OBJECT

public:
  static constexpr Size defaultSize{400, 300};
  static constexpr Size minimumPanelSize{300, 200};
  static constexpr Size maximumPanelSize{800, 600};

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

protected:
  void resizeEvent(QResizeEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mouseReleaseEvent(QMouseEvent *event) override;

private:
  void updateShape(QSize size);

  PanelWindows &panelWindows_;
  QWidget *contentView_;
  ResizeFrame *resizeFrame_;
  bool allowsKeyStatus_ = false;
  bool isTranslucent_ = false;
  std::optional<QPoint> grip_;  // where the pointer holds the panel while it is moved
};

}  // namespace lumiwren
