#pragma once

#include "actions/CustomActionManager.h"
#include "base/Handle.h"
#include "base/MainQueue.h"
#include "platform/EventMonitors.h"
#include "ui/Alert.h"

#include <QWidget>

#include <functional>
#include <optional>

namespace lumiwren {

class ActionList;
class PushButton;
class SheetHost;
class SymbolButton;

/// The list of the user's actions, with what it takes to add, edit and delete them and to put back those that
/// came with the program. Every change is the manager's at once.
class ActionsSettingsView : public QWidget {
  Q_OBJECT

public:
  /// `activation` is for questions that the view asks. `onDismiss` is to close the window.
  ActionsSettingsView(CustomActionManager &actionManager, EventMonitors &eventMonitors, MainQueue &mainQueue,
                      Alert::Activation activation, std::function<void()> onDismiss);

  /// The action whose editor is open.
  const std::optional<CustomAction> &editingAction() const { return editingAction_; }
  /// The editor for a new action is open.
  bool isAddingNew() const { return isAddingNew_; }

protected:
  void keyPressEvent(QKeyEvent *event) override;
  void showEvent(QShowEvent *event) override;

private:
  QWidget *makeHeader();
  QWidget *makeEmptyState();
  QWidget *makeFooter();
  void showState();
  void edit(const CustomAction &action);
  void addNew();
  void endEditing();

  CustomActionManager &actionManager_;
  EventMonitors &eventMonitors_;
  MainQueue &mainQueue_;
  const std::function<void()> onDismiss_;
  std::optional<CustomAction> editingAction_;
  bool isAddingNew_ = false;

  SymbolButton *close_ = nullptr;
  ActionList *list_ = nullptr;
  QWidget *emptyState_ = nullptr;
  PushButton *restoreDefaultActions_ = nullptr;  // in the empty state
  PushButton *restoreDefaults_ = nullptr;        // in the footer
  PushButton *add_ = nullptr;
  SheetHost *sheets_ = nullptr;
  Handle observation_;  // of the manager
};

}  // namespace lumiwren
