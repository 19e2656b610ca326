#pragma once

#include "actions/CustomAction.h"
#include "app/MenuEntry.h"
#include "settings/MenuBarView.h"

#include <vector>

namespace lumiwren {

/// What the menu of the status item says, for desktops that show such menus themselves.
struct StatusMenu {
  std::vector<CustomAction> actions;
  bool launchesAtLogin = false;
  bool canCheckForUpdates = false;
};

/// The entries of the menu, the same and in the same order as those of MenuBarView.
std::vector<MenuEntry> menuEntries(const StatusMenu &menu, const MenuBarView::Callbacks &callbacks,
                                   const std::function<void()> &toggleLaunchAtLogin,
                                   const std::function<void()> &checkForUpdates);

}  // namespace lumiwren
