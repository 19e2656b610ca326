#pragma once

#include "actions/CustomActionManager.h"
#include "base/MainQueue.h"
#include "base/Weak.h"
#include "platform/ApplicationWindows.h"
#include "platform/EventMonitors.h"
#include "platform/Geometry.h"
#include "platform/PanelWindows.h"
#include "platform/Screens.h"

#include <memory>

class QWidget;

namespace lumiwren {

class ActionsSettingsPanel;

/// Owns the window in which the user's actions are listed and changed. Main thread. What it is given outlives
/// it.
class ActionsSettingsWindowController {
public:
  ActionsSettingsWindowController(CustomActionManager &actionManager, EventMonitors &eventMonitors,
                                  Screens &screens, PanelWindows &panelWindows,
                                  ApplicationWindows &applicationWindows, MainQueue &mainQueue);
  ActionsSettingsWindowController(const ActionsSettingsWindowController &) = delete;
  ActionsSettingsWindowController &operator=(const ActionsSettingsWindowController &) = delete;
  ~ActionsSettingsWindowController();

  /// Brings the window to the front with the keyboard; it is made if there is none.
  void showWindow();
  /// Takes the window away; the next one knows nothing of it. What the window shows may call this.
  void closeWindow();

  /// While there is a window, else null.
  ActionsSettingsPanel *panel() const { return panel_.get(); }

  /// Where a window goes: at the top of the visible frame, its middle below the pointer if there is room.
  static Point calculatePosition(Size size, Point mouse, const Rect &visibleFrame);

private:
  struct DeleteLater {
    void operator()(ActionsSettingsPanel *panel) const;
  };

  void makePanel();

  CustomActionManager &actionManager_;
  EventMonitors &eventMonitors_;
  Screens &screens_;
  PanelWindows &panelWindows_;
  ApplicationWindows &applicationWindows_;
  MainQueue &mainQueue_;
  std::unique_ptr<ActionsSettingsPanel, DeleteLater> panel_;
  WeakAnchor<ActionsSettingsWindowController> weak_{this};
};

}  // namespace lumiwren
