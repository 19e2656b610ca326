#pragma once

#include "actions/CustomAction.h"
#include "base/Signal.h"
#include "platform/UserDefaults.h"

#include <string_view>
#include <vector>

namespace lumiwren {

/// The user's list of actions. Main thread. Every change is stored at once; what cannot be read or stored is
/// printed as one line on standard output.
class CustomActionManager {
public:
  static constexpr std::string_view userDefaultsKey = "customActions";
  static constexpr std::string_view hasInitializedKey = "hasInitializedDefaultActions";
  /// Named after the version in which the default prompts last changed.
  static constexpr std::string_view promptMigrationKey = "hasUpdatedDefaultPrompts_v1.4";

  explicit CustomActionManager(UserDefaults &defaults);

  const std::vector<CustomAction> &actions() const { return actions_; }
  /// Told after every assignment of the list.
  Signal<> actionsChanged;

  void addAction(CustomAction action);
  void updateAction(const CustomAction &action);
  void deleteAction(const CustomAction &action);
  void restoreDefaultActions();
  bool hasMissingDefaultActions() const;

private:
  void loadActions();
  void saveActions();
  void initializeDefaultActionsIfNeeded();
  void migrateDefaultPromptsIfNeeded();
  void setActions(std::vector<CustomAction> actions);

  UserDefaults &defaults_;
  std::vector<CustomAction> actions_;
};

}  // namespace lumiwren
