#include "settings/MenuBarView.h"

#include "ui/Divider.h"
#include "ui/Spacing.h"
#include "ui/ThinScrollBar.h"

#include <QKeyEvent>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>
#include <utility>

namespace lumiwren {
namespace {

constexpr int apiKeySymbolSize = 10;
constexpr int launchAtLoginSymbolSize = 12;

/// Shows entries one below the other, as many as there is room for.
class ActionsArea : public QScrollArea {
public:
  explicit ActionsArea(QWidget *parent) : QScrollArea(parent) {
    setFrameShape(NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new ThinScrollBar(this));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    viewport()->setAutoFillBackground(false);
  }

  QSize sizeHint() const override { return widget() != nullptr ? widget()->sizeHint() : QSize(); }
  QSize minimumSizeHint() const override { return {0, std::min(sizeHint().height(), fewest)}; }

protected:
  /// The arrows move from entry to entry, and the area follows.
  void keyPressEvent(QKeyEvent *event) override { event->ignore(); }

private:
  static constexpr int fewest = 90;  // three entries
};

}  // namespace

MenuBarView::MenuBarView(LaunchAtLoginManager &launchAtLogin, CustomActionManager &actionManager,
                         UpdateManager &updateManager, Callbacks callbacks, QWidget *parent)
    : QWidget(parent),
      launchAtLogin_(launchAtLogin),
      actionManager_(actionManager),
      updateManager_(updateManager),
      callbacks_(std::move(callbacks)),
      layout_(new QVBoxLayout(this)),
      scrollArea_(new ActionsArea(this)) {
  setAccessibleName(QStringLiteral("Lumiwren"));
  setFocusPolicy(Qt::StrongFocus);
  layout_->setContentsMargins(spacing::tiny, spacing::tiny, spacing::tiny, spacing::tiny);
  layout_->setSpacing(0);
  layout_->addWidget(scrollArea_);
  addDivider();
  addEntry(QStringLiteral("Manage Actions..."), callbacks_.showActions);
  apiKeyEntry_ = addEntry(QStringLiteral("Set API Key..."), callbacks_.showAPIKeyInput);
  launchAtLoginEntry_ =
      addEntry(QStringLiteral("Launch at Login"), [&manager = launchAtLogin_] { manager.toggle(); });
  updateEntry_ = addEntry(QStringLiteral("Check for Updates..."),
                          [&updater = updateManager_.updater()] { updater.checkForUpdates(); });
  addEntry(QStringLiteral("About Lumiwren"), callbacks_.showAbout);
  addDivider();
  addEntry(QStringLiteral("Quit"), callbacks_.onQuit);
  showActionEntries();
  showLaunchAtLogin();
  actionsObservation_ = actionManager_.actionsChanged.observe([this] { showActionEntries(); });
  launchAtLoginObservation_ = launchAtLogin_.observe([this] { showLaunchAtLogin(); });
}

void MenuBarView::setHasAPIKey(bool hasKey) {
  using Symbol = MenuItemButton::Symbol;
  apiKeyEntry_->setTrailingSymbol(hasKey
                                      ? std::optional(Symbol{.name = QStringLiteral("checkmark.circle.fill"),
                                                             .size = apiKeySymbolSize,
                                                             .color = &SemanticColors::green,
                                                             .meaning = QStringLiteral("set")})
                                      : std::nullopt);
}

void MenuBarView::prepare() {
  updateEntry_->setEnabled(updateManager_.updater().canCheckForUpdates());
  scrollArea_->verticalScrollBar()->setValue(0);
  setFocus(Qt::PopupFocusReason);
}

void MenuBarView::keyPressEvent(QKeyEvent *event) {
  switch (event->key()) {
    case Qt::Key_Down:
      moveBy(1);
      return;
    case Qt::Key_Up:
      moveBy(-1);
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

MenuItemButton *MenuBarView::addEntry(const QString &label, std::function<void()> action) {
  auto *const entry = new MenuItemButton(label, this);
  connect(entry, &MenuItemButton::clicked, this, std::move(action));
  layout_->addWidget(entry);
  return entry;
}

void MenuBarView::addDivider() {
  layout_->addSpacing(spacing::tiny);
  auto *const divider = new Divider(this);
  auto *const row = new QHBoxLayout;
  row->setContentsMargins(spacing::small, 0, spacing::small, 0);
  row->addWidget(divider);
  layout_->addLayout(row);
  layout_->addSpacing(spacing::tiny);
}

void MenuBarView::showActionEntries() {
  auto list = std::make_unique<QWidget>();
  list->setAutoFillBackground(false);
  auto *const rows = new QVBoxLayout(list.get());
  rows->setContentsMargins(0, 0, 0, 0);
  rows->setSpacing(0);
  for (const CustomAction &action : actionManager_.actions()) {
    auto *const entry = new MenuItemButton(QString::fromStdString(action.name), list.get());
    entry->setTrailingText(QString::fromStdString(action.hotkey.displayString()));
    connect(entry, &MenuItemButton::clicked, this, [this, action] { callbacks_.onAction(action); });
    rows->addWidget(entry);
  }
  if (actionManager_.actions().empty()) {
    auto *const entry = new MenuItemButton(QStringLiteral("No actions configured"), list.get());
    entry->setEnabled(false);
    rows->addWidget(entry);
  }
  scrollArea_->setWidget(list.release());
  scrollArea_->widget()->setAutoFillBackground(false);
  scrollArea_->updateGeometry();
}

void MenuBarView::showLaunchAtLogin() {
  using Symbol = MenuItemButton::Symbol;
  launchAtLoginEntry_->setTrailingSymbol(launchAtLogin_.isEnabled()
                                             ? std::optional(Symbol{.name = QStringLiteral("checkmark"),
                                                                    .size = launchAtLoginSymbolSize,
                                                                    .color = &SemanticColors::primary,
                                                                    .meaning = QStringLiteral("on")})
                                             : std::nullopt);
}

std::vector<MenuItemButton *> MenuBarView::entries() const {
  std::vector<MenuItemButton *> entries;
  for (auto *const entry : scrollArea_->widget()->findChildren<MenuItemButton *>()) {
    entries.push_back(entry);
  }
  for (auto *const entry : findChildren<MenuItemButton *>(QString(), Qt::FindDirectChildrenOnly)) {
    entries.push_back(entry);
  }
  std::erase_if(entries, [](const MenuItemButton *entry) { return !entry->isEnabled(); });
  return entries;
}

void MenuBarView::moveBy(int step) {
  const auto all = entries();
  const auto count = static_cast<std::ptrdiff_t>(all.size());
  const auto current =
      std::find_if(all.begin(), all.end(), [](const auto *entry) { return entry->hasFocus(); });
  // From nowhere, down leads to the first entry and up to the last.
  const std::ptrdiff_t from = current != all.end() ? current - all.begin() : (step > 0 ? -1 : count);
  auto *const next = all[static_cast<std::size_t>((from + step + count) % count)];
  next->setFocus(Qt::OtherFocusReason);
  if (scrollArea_->isAncestorOf(next)) {
    scrollArea_->ensureWidgetVisible(next, 0, 0);
  }
}

}  // namespace lumiwren
