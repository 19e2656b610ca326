#include "settings/ActionsSettingsWindowController.h"

#include "settings/ActionsSettingsPanel.h"
#include "settings/ActionsSettingsView.h"
#include "ui/DesktopGeometry.h"

#include <QWidget>

#include <algorithm>

namespace lumiwren {
namespace {

void bringToFront(ApplicationWindows &windows, const QWidget &window) {
  windows.setFloating(window.winId());
  windows.activate(window.winId());
}

}  // namespace

ActionsSettingsWindowController::ActionsSettingsWindowController(CustomActionManager &actionManager,
                                                                 EventMonitors &eventMonitors,
                                                                 Screens &screens, PanelWindows &panelWindows,
                                                                 ApplicationWindows &applicationWindows,
                                                                 MainQueue &mainQueue)
    : actionManager_(actionManager),
      eventMonitors_(eventMonitors),
      screens_(screens),
      panelWindows_(panelWindows),
      applicationWindows_(applicationWindows),
      mainQueue_(mainQueue) {}

ActionsSettingsWindowController::~ActionsSettingsWindowController() {
  delete panel_.release();  // Nobody is left to wait for.
}

void ActionsSettingsWindowController::showWindow() {
  if (!panel_) {
    makePanel();
  }
  panel_->raise();
  panel_->show();
  bringToFront(applicationWindows_, *panel_);
}

void ActionsSettingsWindowController::makePanel() {
  const auto close = [weak = weak_.weak()] {
    if (auto *const self = weak.get()) {
      self->closeWindow();
    }
  };
  auto view = std::make_unique<ActionsSettingsView>(
      actionManager_, eventMonitors_, mainQueue_,
      Alert::Activation{
          .activate = [&windows = applicationWindows_](QWidget &window) { bringToFront(windows, window); },
          .handOver = [&windows = applicationWindows_](
                          QWidget &window) { windows.handOverKeyboard(window.winId()); }},
      close);
  panel_.reset(new ActionsSettingsPanel(panelWindows_, std::move(view), close));
  if (const auto frame = screens_.mainScreenVisibleFrame()) {
    const Size size{static_cast<double>(panel_->width()), static_cast<double>(panel_->height())};
    const Point origin = calculatePosition(size, screens_.mouseLocation(), *frame);
    panel_->move(toolkitPosition({origin.x, origin.y + size.height}));
  }
}

void ActionsSettingsWindowController::closeWindow() {
  if (panel_) {
    panel_->hide();
    panel_.reset();
  }
}

void ActionsSettingsWindowController::DeleteLater::operator()(ActionsSettingsPanel *panel) const {
  panel->deleteLater();  // What it shows may be on its way back from a click.
}

Point ActionsSettingsWindowController::calculatePosition(Size size, Point mouse, const Rect &visibleFrame) {
  const double x = std::min(visibleFrame.maxX() - size.width - ActionsSettingsPanel::screenMargin,
                            mouse.x - size.width / 2);
  return {std::max(visibleFrame.minX() + ActionsSettingsPanel::screenMargin, x),
          visibleFrame.maxY() - size.height - ActionsSettingsPanel::screenMargin};
}

}  // namespace lumiwren
