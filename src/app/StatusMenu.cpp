#include "app/StatusMenu.h"

namespace lumiwren {
namespace {

// The actions' come after all others.
enum Id {
  NoActions = 1,
  FirstDivider,
  Actions,
  APIKey,
  LaunchAtLogin,
  Updates,
  About,
  LastDivider,
  Quit,
  FirstAction
};

}  // namespace

std::vector<MenuEntry> menuEntries(const StatusMenu &menu, const MenuBarView::Callbacks &callbacks,
                                   const std::function<void()> &toggleLaunchAtLogin,
                                   const std::function<void()> &checkForUpdates) {
  std::vector<MenuEntry> entries;
  int id = FirstAction;
  for (const CustomAction &action : menu.actions) {
    entries.push_back({.id = id++,
                       .label = QString::fromStdString(action.name),
                       .action = [onAction = callbacks.onAction, action] { onAction(action); }});
  }
  if (menu.actions.empty()) {
    entries.push_back({.id = NoActions,
                       .label = QStringLiteral("No actions configured"),
                       .action = [] {},
                       .enabled = false});
  }
  entries.push_back({.id = FirstDivider, .label = {}, .action = {}, .separator = true});
  entries.push_back(
      {.id = Actions, .label = QStringLiteral("Manage Actions..."), .action = callbacks.showActions});
  entries.push_back(
      {.id = APIKey, .label = QStringLiteral("Set API Key..."), .action = callbacks.showAPIKeyInput});
  entries.push_back({.id = LaunchAtLogin,
                     .label = QStringLiteral("Launch at Login"),
                     .action = toggleLaunchAtLogin,
                     .checked = menu.launchesAtLogin});
  entries.push_back({.id = Updates,
                     .label = QStringLiteral("Check for Updates..."),
                     .action = checkForUpdates,
                     .enabled = menu.canCheckForUpdates});
  entries.push_back({.id = About, .label = QStringLiteral("About Lumiwren"), .action = callbacks.showAbout});
  entries.push_back({.id = LastDivider, .label = {}, .action = {}, .separator = true});
  entries.push_back({.id = Quit, .label = QStringLiteral("Quit"), .action = callbacks.onQuit});
  return entries;
}

}  // namespace lumiwren
