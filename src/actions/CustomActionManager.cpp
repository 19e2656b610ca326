#include "actions/CustomActionManager.h"

#include "actions/CustomActionJSON.h"
#include "base/PrintLine.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace lumiwren {

namespace {

// In the order in which they are listed and inserted.
std::array<const CustomAction *, 3> defaultActions() {
  return {&CustomAction::defaultExplainText(), &CustomAction::defaultExplainScreen(),
          &CustomAction::defaultTranslate()};
}

std::set<UUID> presentDefaultIDs(const std::vector<CustomAction> &actions) {
  std::set<UUID> ids;
  for (const auto &action : actions) {
    if (action.isDefault) {
      ids.insert(action.id);
    }
  }
  return ids;
}

// An id that is not one of the three counts as the first one, not as the last.
std::size_t defaultPosition(const UUID &id) {
  const auto defaults = defaultActions();
  const auto found =
      std::find_if(defaults.begin(), defaults.end(), [&](const auto *action) { return action->id == id; });
  return found != defaults.end() ? static_cast<std::size_t>(found - defaults.begin()) : 0;
}

bool comesBefore(const CustomAction &a, const CustomAction &b) {
  if (!a.isDefault) {
    return false;
  }
  return !b.isDefault || defaultPosition(a.id) < defaultPosition(b.id);
}

}  // namespace

CustomActionManager::CustomActionManager(UserDefaults &defaults) : defaults_(defaults) {
  loadActions();
  initializeDefaultActionsIfNeeded();
  migrateDefaultPromptsIfNeeded();
}

void CustomActionManager::addAction(CustomAction action) {
  auto actions = actions_;
  actions.push_back(std::move(action));
  setActions(std::move(actions));
  saveActions();
}

void CustomActionManager::updateAction(const CustomAction &action) {
  auto actions = actions_;
  const auto found = std::find_if(actions.begin(), actions.end(),
                                  [&](const auto &candidate) { return candidate.id == action.id; });
  if (found == actions.end()) {
    return;
  }
  *found = action;
  setActions(std::move(actions));
  saveActions();
}

void CustomActionManager::deleteAction(const CustomAction &action) {
  auto actions = actions_;
  std::erase_if(actions, [&](const auto &candidate) { return candidate.id == action.id; });
  setActions(std::move(actions));
  saveActions();
}

void CustomActionManager::restoreDefaultActions() {
  auto actions = actions_;
  const auto present = presentDefaultIDs(actions);
  for (const auto *action : defaultActions()) {
    if (present.count(action->id) == 0) {
      const auto firstOwn = std::find_if(actions.begin(), actions.end(),
                                         [](const auto &candidate) { return !candidate.isDefault; });
      actions.insert(firstOwn, *action);
    }
  }
  std::stable_sort(actions.begin(), actions.end(), comesBefore);
  setActions(std::move(actions));
  saveActions();
}

bool CustomActionManager::hasMissingDefaultActions() const {
  const auto present = presentDefaultIDs(actions_);
  const auto defaults = defaultActions();
  return std::any_of(defaults.begin(), defaults.end(),
                     [&](const auto *action) { return present.count(action->id) == 0; });
}

void CustomActionManager::loadActions() {
  const auto stored = defaults_.dataForKey(userDefaultsKey);
  if (!stored) {
    return;
  }
  try {
    setActions(decodeCustomActions(*stored));
  } catch (const CustomActionJSONError &error) {
    printLine(std::string("Failed to load custom actions: ") + error.what());
  }
}

void CustomActionManager::saveActions() {
  try {
    defaults_.setData(userDefaultsKey, encodeCustomActions(actions_));
  } catch (const CustomActionJSONError &error) {
    printLine(std::string("Failed to save custom actions: ") + error.what());
  }
}

void CustomActionManager::initializeDefaultActionsIfNeeded() {
  if (defaults_.boolForKey(hasInitializedKey)) {
    return;
  }
  std::vector<CustomAction> actions;
  for (const auto *action : defaultActions()) {
    actions.push_back(*action);
  }
  actions.insert(actions.end(), actions_.begin(), actions_.end());
  setActions(std::move(actions));
  saveActions();
  defaults_.setBool(hasInitializedKey, true);
}

void CustomActionManager::migrateDefaultPromptsIfNeeded() {
  if (defaults_.boolForKey(promptMigrationKey)) {
    return;
  }
  auto actions = actions_;
  bool changed = false;
  for (auto &action : actions) {
    for (const auto *current : defaultActions()) {
      if (action.isDefault && action.id == current->id && action.prompt != current->prompt) {
        action.prompt = current->prompt;
        changed = true;
      }
    }
  }
  if (changed) {
    setActions(std::move(actions));
    saveActions();
  }
  defaults_.setBool(promptMigrationKey, true);
}

void CustomActionManager::setActions(std::vector<CustomAction> actions) {
  actions_ = std::move(actions);
  actionsChanged.notify();
}

}  // namespace lumiwren
