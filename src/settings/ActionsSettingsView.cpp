#include "settings/ActionsSettingsView.h"

#include "settings/ActionEditorView.h"
#include "settings/ActionList.h"
#include "ui/Divider.h"
#include "ui/PushButton.h"
#include "ui/SheetHost.h"
#include "ui/Spacing.h"
#include "ui/SymbolButton.h"
#include "ui/SymbolView.h"
#include "ui/TextLabel.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <memory>
#include <utility>

namespace lumiwren {
namespace {

constexpr int closeSymbolSize = 14;
constexpr int emptySymbolSize = 40;

}  // namespace

ActionsSettingsView::ActionsSettingsView(CustomActionManager &actionManager, EventMonitors &eventMonitors,
                                         MainQueue &mainQueue, Alert::Activation activation,
                                         std::function<void()> onDismiss)
    : actionManager_(actionManager),
      eventMonitors_(eventMonitors),
      mainQueue_(mainQueue),
      onDismiss_(std::move(onDismiss)) {
  auto *const column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(makeHeader());
  column->addWidget(new Divider);
  list_ =
      new ActionList({.onEdit = [this](const CustomAction &action) { edit(action); },
                      .onDelete = [this](const CustomAction &action) { actionManager_.deleteAction(action); },
                      .activation = std::move(activation)},
                     *close_);
  column->addWidget(list_, 1);
  emptyState_ = makeEmptyState();
  column->addWidget(emptyState_, 1);
  column->addWidget(new Divider);
  column->addWidget(makeFooter());
  for (auto *const button : findChildren<QPushButton *>()) {
    button->setAutoDefault(true);  // Return presses what has the keyboard.
  }
  sheets_ = new SheetHost(this);
  connect(sheets_, &SheetHost::escaped, this, &ActionsSettingsView::endEditing);
  showState();
  observation_ = actionManager_.actionsChanged.observe([this] { showState(); });
}

QWidget *ActionsSettingsView::makeHeader() {
  auto *const header = new QWidget;
  auto *const row = new QHBoxLayout(header);
  row->setContentsMargins(spacing::large, spacing::medium, spacing::medium, spacing::medium);
  row->addWidget(new TextLabel(QStringLiteral("Actions"), TextStyle::Headline));
  row->addStretch();
  close_ = new SymbolButton(QStringLiteral("xmark.circle.fill"), closeSymbolSize, QStringLiteral("Close"),
                            [](const SemanticColors &colors) { return colors.secondary; });
  connect(close_, &SymbolButton::clicked, this, [this] { onDismiss_(); });
  row->addWidget(close_);
  return header;
}

QWidget *ActionsSettingsView::makeEmptyState() {
  auto *const state = new QWidget;
  auto *const column = new QVBoxLayout(state);
  column->setSpacing(spacing::small);
  column->addStretch();
  column->addWidget(
      new SymbolView(QStringLiteral("keyboard.badge.ellipsis"), emptySymbolSize, &SemanticColors::secondary),
      0, Qt::AlignHCenter);
  column->addSpacing(spacing::tiny);
  column->addWidget(new TextLabel(QStringLiteral("No Actions"), TextStyle::Headline), 0, Qt::AlignHCenter);
  column->addWidget(new TextLabel(QStringLiteral("Create actions with your own hotkeys and prompts."),
                                  TextStyle::Caption, &SemanticColors::secondary),
                    0, Qt::AlignHCenter);
  restoreDefaultActions_ =
      new PushButton(PushButton::Kind::Bordered, QStringLiteral("Restore Default Actions"));
  connect(restoreDefaultActions_, &PushButton::clicked, this,
          [this] { actionManager_.restoreDefaultActions(); });
  column->addSpacing(spacing::small);
  column->addWidget(restoreDefaultActions_, 0, Qt::AlignHCenter);
  column->addStretch();
  return state;
}

QWidget *ActionsSettingsView::makeFooter() {
  auto *const footer = new QWidget;
  auto *const row = new QHBoxLayout(footer);
  row->setContentsMargins(spacing::large, spacing::medium, spacing::large, spacing::medium);
  row->setSpacing(spacing::small);
  restoreDefaults_ = new PushButton(PushButton::Kind::Bordered, QStringLiteral("Restore Defaults"));
  add_ = new PushButton(PushButton::Kind::Bordered, QStringLiteral("Add Action"));
  add_->setSymbol(QStringLiteral("plus"));
  auto *const done = new PushButton(PushButton::Kind::Prominent, QStringLiteral("Done"));
  connect(restoreDefaults_, &PushButton::clicked, this, [this] { actionManager_.restoreDefaultActions(); });
  connect(add_, &PushButton::clicked, this, &ActionsSettingsView::addNew);
  connect(done, &PushButton::clicked, this, [this] { onDismiss_(); });
  row->addWidget(restoreDefaults_);
  row->addStretch();
  row->addWidget(add_);
  row->addWidget(done);
  return footer;
}

void ActionsSettingsView::showState() {
  const auto &actions = actionManager_.actions();
  const bool isEmpty = actions.empty() && !isAddingNew_;
  const bool hasMissing = actionManager_.hasMissingDefaultActions();
  list_->setActions(actions);
  list_->setHidden(isEmpty);
  emptyState_->setVisible(isEmpty);
  restoreDefaultActions_->setVisible(hasMissing);
  restoreDefaults_->setVisible(hasMissing);
}

void ActionsSettingsView::edit(const CustomAction &action) {
  if (sheets_->isPresenting()) {
    return;  // Assistive technology reaches what is below the sheet.
  }
  editingAction_ = action;
  sheets_->present(std::make_unique<ActionEditorView>(
      action, eventMonitors_, mainQueue_,
      ActionEditorView::Callbacks{.onSave =
                                      [this](const CustomAction &edited) {
                                        actionManager_.updateAction(edited);
                                        endEditing();
                                      },
                                  .onCancel = [this] { endEditing(); }}));
}

void ActionsSettingsView::addNew() {
  if (sheets_->isPresenting()) {
    return;
  }
  isAddingNew_ = true;
  showState();
  sheets_->present(
      std::make_unique<ActionEditorView>(std::nullopt, eventMonitors_, mainQueue_,
                                         ActionEditorView::Callbacks{.onSave =
                                                                         [this](const CustomAction &added) {
                                                                           actionManager_.addAction(added);
                                                                           endEditing();
                                                                           list_->showLast();
                                                                         },
                                                                     .onCancel = [this] { endEditing(); }}));
}

void ActionsSettingsView::endEditing() {
  editingAction_.reset();
  isAddingNew_ = false;
  showState();
  sheets_->dismiss();
}

void ActionsSettingsView::showEvent(QShowEvent *event) {
  if (!window()->focusWidget()) {
    if (list_->rows().empty()) {
      add_->setFocus(Qt::OtherFocusReason);
    } else {
      list_->moveTo(0);
    }
  }
  QWidget::showEvent(event);
}

void ActionsSettingsView::keyPressEvent(QKeyEvent *event) {
  if (event->key() == Qt::Key_Escape) {
    onDismiss_();
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace lumiwren
