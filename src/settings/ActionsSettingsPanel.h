#pragma once

#include "base/Handle.h"
#include "platform/PanelWindows.h"

#include <QPoint>
#include <QPointF>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>

namespace lumiwren {

/// The window of the actions settings: without a frame, moved by its background. Its corners are round where
/// a compositor runs. It is born hidden.
class ActionsSettingsPanel : public QWidget {
  Q_OBJECT

public:
  /// In points where text has its stated size; with the text it grows as far as the screen has room.
  static constexpr QSize contentSize{480, 500};
  static constexpr int screenMargin = 10;  // between it and the edges of the screen

  /// `onClose` is called when the desktop asks for the window to be closed; that alone closes nothing.
  ActionsSettingsPanel(PanelWindows &panelWindows, std::unique_ptr<QWidget> contentView,
                       std::function<void()> onClose);

protected:
  void changeEvent(QEvent *event) override;
  void closeEvent(QCloseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseReleaseEvent(QMouseEvent *event) override;
  void paintEvent(QPaintEvent *event) override;

private:
  void adaptSize();

  PanelWindows &panelWindows_;
  const std::function<void()> onClose_;
  struct Grip {
    QPointF pointer;
    QPoint window;
  };
  std::optional<Grip> grip_;  // where both were when the pointer took hold of the window
  Handle compositor_;
};

}  // namespace lumiwren
