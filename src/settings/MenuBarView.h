#pragma once

#include "actions/CustomActionManager.h"
#include "app/managers/LaunchAtLoginManager.h"
#include "app/managers/UpdateManager.h"
#include "base/Handle.h"
#include "settings/MenuItemButton.h"

#include <QWidget>

#include <functional>
#include <vector>

class QScrollArea;
class QVBoxLayout;

namespace lumiwren {

/// The menu of the status item: the actions, each with its hotkey, then settings and commands. It is as wide
/// as it is made; its height is that of its entries, of which the actions scroll where the height is less.
class MenuBarView : public QWidget {
public:
  struct Callbacks {
    std::function<void(const CustomAction &)> onAction;
    std::function<void()> onQuit;
    /// The windows that the menu opens.
    std::function<void()> showActions;
    std::function<void()> showAPIKeyInput;
    std::function<void()> showAbout;
  };

  /// The managers outlive the view.
  MenuBarView(LaunchAtLoginManager &launchAtLogin, CustomActionManager &actionManager,
              UpdateManager &updateManager, Callbacks callbacks, QWidget *parent = nullptr);

  /// Whether the key store holds a key, as far as that is known.
  void setHasAPIKey(bool hasKey);
  /// To be called before the menu is shown: no entry is highlighted, and the actions begin at the top.
  void prepare();

protected:
  void keyPressEvent(QKeyEvent *event) override;

private:
  MenuItemButton *addEntry(const QString &label, std::function<void()> action);
  void addDivider();
  void showActionEntries();
  void showLaunchAtLogin();
  /// Every entry that can be chosen, from the top.
  std::vector<MenuItemButton *> entries() const;
  void moveBy(int step);

  LaunchAtLoginManager &launchAtLogin_;
  CustomActionManager &actionManager_;
  UpdateManager &updateManager_;
  const Callbacks callbacks_;
  QVBoxLayout *const layout_;
  QScrollArea *const scrollArea_;
  MenuItemButton *apiKeyEntry_;
  MenuItemButton *launchAtLoginEntry_;
  MenuItemButton *updateEntry_;
  Handle actionsObservation_;
  Handle launchAtLoginObservation_;
};

}  // namespace lumiwren
