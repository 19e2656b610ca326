#pragma once

#include "app/ActionDispatch.h"
#include "app/StatusItem.h"
#include "app/managers/LaunchAtLoginManager.h"
#include "app/managers/UpdateManager.h"
#include "settings/MenuBarView.h"
#include "settings/Popover.h"

#include <QDBusConnection>
#include <QPoint>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace lumiwren {

/// The program's life between its start and its end: the status item with its menu, the hotkeys, and what a
/// launch shows. Main thread.
class AppDelegate {
public:
  struct Services : ActionDispatch::Services {
    LaunchAtLoginManager &launchAtLogin;
    UpdateManager &updates;
  };
  /// Windows of the program, each shown in front whenever it is asked for.
  struct Windows {
    std::function<void()> showActions;
    std::function<void()> showAPIKeyInput;
    std::function<void()> showAbout;
    std::function<void()> showFirstLaunchWindow;
  };

  /// `bus` is the session bus, on a connection of the program's own. `terminate` ends the program's event
  /// loop.
  AppDelegate(const Services &services, QDBusConnection bus, Windows windows,
              std::function<void()> terminate);

  void applicationDidFinishLaunching();
  void applicationWillTerminate();

  /// Shows or closes the menu; `anchor` is where the status item is, on Qt's desktop.
  void togglePopover(QPoint anchor);
  void showPopover(QPoint anchor);

  /// What does the same as the hotkey of the first action of that identifier, or else of that name; empty
  /// when there is none.
  std::function<void()> actionNamed(const QString &nameOrIdentifier);
  /// A JSON list of objects with "id", "hotkey", "name" and "inputType".
  QString actionList() const;

private:
  void setupMenuBar();
  void checkFirstLaunch();
  void checkAccessibilityPermission();
  void prepare();
  Popover &popover();
  void notePopoverDismissed();
  MenuBarView::Callbacks menuCallbacks();
  void showStatusMenu();
  /// Calls `checked` on the main thread when it is known whether a key is stored.
  void checkAPIKey(std::function<void(bool)> checked);
  void openFromMenu(const std::function<void()> &show);
  void showAccessibilityAlert();
  void showScreenRecordingAlert();
  bool wantsSystemSettings(const QString &message, const QString &informativeText);
  void activate(QWidget &window);

  const Services services_;
  const Windows windows_;
  const QDBusConnection bus_;
  const std::function<void()> terminate_;
  std::optional<StatusItem> statusItem_;
  MenuBarView *menuBarView_ = nullptr;  // the popover's
  std::unique_ptr<Popover> popover_;
  // Of the popover. The tray and the display server tell of one click each in its own time.
  std::uint32_t shownAt_ = 0;          // see InputEvent::time; the press that did it may be told later
  bool hasJustBeenDismissed_ = false;  // perhaps by the press of the click that is about to be told
  Handle eventMonitor_;
  Handle actionsObservation_;
  Handle launchAtLoginObservation_;
  ActionDispatch dispatch_;
  WeakAnchor<AppDelegate> anchor_{this};
};

}  // namespace lumiwren
