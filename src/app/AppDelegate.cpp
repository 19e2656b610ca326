#include "app/AppDelegate.h"

#include "app/StatusMenu.h"
#include "ui/Alert.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::chrono::milliseconds welcomeDelay{500};
constexpr std::chrono::milliseconds accessibilityAlertDelay{1000};
constexpr std::chrono::milliseconds preparationDelay{100};
// The popover has finished closing by then, and takes no focus away from the window.
constexpr std::chrono::milliseconds menuClosingDelay{100};
// A click on the status item closes the menu when it is pressed; the tray tells of it when it is released.
constexpr std::chrono::milliseconds clickDuration{500};
constexpr QSize popoverSize(220, 220);

}  // namespace

AppDelegate::AppDelegate(const Services &services, QDBusConnection bus, Windows windows,
                         std::function<void()> terminate)
    : services_(services),
      windows_(std::move(windows)),
      bus_(std::move(bus)),
      terminate_(std::move(terminate)),
      dispatch_(services, {.showAccessibilityAlert = [this] { showAccessibilityAlert(); },
                           .showScreenRecordingAlert = [this] { showScreenRecordingAlert(); }}) {}

void AppDelegate::applicationDidFinishLaunching() {
  setupMenuBar();
  dispatch_.setupHotkey();
  checkFirstLaunch();
  checkAccessibilityPermission();
  // When everything else is up: what is shown first then has only to be shown.
  services_.mainQueue.postAfter(preparationDelay, [weak = anchor_.weak()] {
    if (auto *const self = weak.get()) {
      self->prepare();
    }
  });
}

void AppDelegate::applicationWillTerminate() {
  services_.hotkeys.stopMonitoring();
}

void AppDelegate::togglePopover(QPoint anchor) {
  if (popover_ && popover_->isShown()) {
    popover_->performClose();
  } else if (!std::exchange(hasJustBeenDismissed_, false)) {
    showPopover(anchor);
  }
}

void AppDelegate::showPopover(QPoint anchor) {
  popover();
  menuBarView_->prepare();
  checkAPIKey([this](bool hasKey) { menuBarView_->setHasAPIKey(hasKey); });
  shownAt_ = services_.platform.eventMonitors().currentTime();
  popover_->showAt(anchor);
}

std::function<void()> AppDelegate::actionNamed(const QString &nameOrIdentifier) {
  const auto &actions = services_.actions.actions();
  const std::string name = nameOrIdentifier.toStdString();
  auto found = actions.end();
  if (const auto id = UUID::parse(name)) {
    found =
        std::find_if(actions.begin(), actions.end(), [&](const auto &action) { return action.id == *id; });
  }
  if (found == actions.end()) {
    found =
        std::find_if(actions.begin(), actions.end(), [&](const auto &action) { return action.name == name; });
  }
  if (found == actions.end()) {
    return {};
  }
  return [weak = anchor_.weak(), action = *found] {
    if (auto *const self = weak.get()) {
      self->dispatch_.dispatchAction(action);
    }
  };
}

QString AppDelegate::actionList() const {
  QJsonArray list;
  for (const CustomAction &action : services_.actions.actions()) {
    const auto inputType = CustomAction::rawValue(action.inputType);
    list.append(QJsonObject{
        {QStringLiteral("id"), QString::fromStdString(action.id.toString())},
        {QStringLiteral("hotkey"), QString::fromStdString(action.hotkey.displayString())},
        {QStringLiteral("name"), QString::fromStdString(action.name)},
        {QStringLiteral("inputType"),
         QString::fromUtf8(inputType.data(), static_cast<qsizetype>(inputType.size()))},
    });
  }
  return QString::fromUtf8(QJsonDocument(list).toJson(QJsonDocument::Compact));
}

void AppDelegate::setupMenuBar() {
  statusItem_.emplace(
      bus_, [this](QPoint anchor) { togglePopover(anchor); }, [this] { showStatusMenu(); });
  showStatusMenu();
  actionsObservation_ = services_.actions.actionsChanged.observe([this] { showStatusMenu(); });
  launchAtLoginObservation_ = services_.launchAtLogin.observe([this] { showStatusMenu(); });
  eventMonitor_ = services_.platform.eventMonitors().addGlobalMonitor(
      eventMask::leftMouseDown | eventMask::rightMouseDown, [weak = anchor_.weak()](const InputEvent &press) {
        if (auto *const self = weak.get(); self && self->popover_ && press.isLaterThan(self->shownAt_)) {
          self->popover_->dismiss();
        }
      });
}

void AppDelegate::notePopoverDismissed() {
  hasJustBeenDismissed_ = true;
  services_.mainQueue.postAfter(clickDuration, [weak = anchor_.weak()] {
    if (auto *const self = weak.get()) {
      self->hasJustBeenDismissed_ = false;
    }
  });
}

void AppDelegate::checkFirstLaunch() {
  checkAPIKey([this](bool hasKey) {
    if (!hasKey) {
      services_.mainQueue.postAfter(welcomeDelay, [weak = anchor_.weak()] {
        if (auto *const self = weak.get()) {
          self->windows_.showFirstLaunchWindow();
        }
      });
    }
  });
}

void AppDelegate::checkAccessibilityPermission() {
  if (services_.platform.accessibilityTrust().isProcessTrusted()) {
    return;
  }
  services_.mainQueue.postAfter(accessibilityAlertDelay, [weak = anchor_.weak()] {
    if (auto *const self = weak.get()) {
      self->showAccessibilityAlert();
    }
  });
}

void AppDelegate::prepare() {
  services_.popup.prepare();
  services_.screenCapture.removeStaleCaptures().detach();
}

Popover &AppDelegate::popover() {
  if (!popover_) {
    menuBarView_ =
        new MenuBarView(services_.launchAtLogin, services_.actions, services_.updates, menuCallbacks());
    popover_ = std::make_unique<Popover>(menuBarView_, popoverSize, services_.platform.panelWindows());
    QObject::connect(popover_.get(), &Popover::dismissed, popover_.get(), [this] { notePopoverDismissed(); });
  }
  return *popover_;
}

MenuBarView::Callbacks AppDelegate::menuCallbacks() {
  const auto opening = [this](const std::function<void()> &show) {
    return [this, &show] { openFromMenu(show); };
  };
  return {.onAction =
              [this](const CustomAction &action) {
                if (popover_) {
                  popover_->performClose();
                }
                dispatch_.dispatchAction(action);
              },
          .onQuit = terminate_,
          .showActions = opening(windows_.showActions),
          .showAPIKeyInput = opening(windows_.showAPIKeyInput),
          .showAbout = opening(windows_.showAbout)};
}

void AppDelegate::showStatusMenu() {
  Updater &updater = services_.updates.updater();
  statusItem_->setEntries(menuEntries(
      {.actions = services_.actions.actions(),
       .launchesAtLogin = services_.launchAtLogin.isEnabled(),
       .canCheckForUpdates = updater.canCheckForUpdates()},
      menuCallbacks(), [&manager = services_.launchAtLogin] { manager.toggle(); },
      [&updater] { updater.checkForUpdates(); }));
}

void AppDelegate::checkAPIKey(std::function<void(bool)> checked) {
  Task::start([&keychain = services_.keychain, &mainQueue = services_.mainQueue, checked = std::move(checked),
               weak = anchor_.weak()](const std::stop_token &) {
    const bool hasKey = keychain.hasAPIKey();
    mainQueue.post([weak, checked, hasKey] {
      if (weak.get() != nullptr) {
        checked(hasKey);
      }
    });
  }).detach();
}

void AppDelegate::openFromMenu(const std::function<void()> &show) {
  if (popover_) {
    popover_->performClose();
  }
  services_.mainQueue.postAfter(menuClosingDelay, [weak = anchor_.weak(), &show] {
    if (weak.get() != nullptr) {
      show();
    }
  });
}

void AppDelegate::showAccessibilityAlert() {
  if (wantsSystemSettings(
          QStringLiteral("Accessibility Permission Required"),
          QStringLiteral(
              "Lumiwren needs accessibility permission to copy selected text. Please grant access in "
              "System Settings > Privacy & Security > Accessibility."))) {
    services_.platform.accessibilityTrust().isProcessTrustedWithPrompt();
  }
}

void AppDelegate::showScreenRecordingAlert() {
  const bool opens = wantsSystemSettings(
      QStringLiteral("Screen Recording Permission Required"),
      QStringLiteral("Lumiwren needs screen recording permission to capture screen regions for OCR. Please "
                     "grant access in System Settings > Privacy & Security > Screen Recording."));
  if (opens && !services_.screenCapture.requestScreenRecordingPermission()) {
    Alert alert(
        QStringLiteral("No System Settings Found"),
        QStringLiteral("This desktop has no settings for screen recording. Lumiwren captures the screen "
                       "in X11 sessions: choose one when you log in."),
        {.activate = [this](QWidget &window) { activate(window); }});
    alert.addButton(QStringLiteral("OK"), Alert::Role::Default);
    alert.run();
  }
}

bool AppDelegate::wantsSystemSettings(const QString &message, const QString &informativeText) {
  Alert alert(message, informativeText, {.activate = [this](QWidget &window) { activate(window); }});
  const int open = alert.addButton(QStringLiteral("Open System Settings"), Alert::Role::Default);
  alert.addButton(QStringLiteral("Later"), Alert::Role::Cancel);
  return alert.run() == open;
}

void AppDelegate::activate(QWidget &window) {
  services_.platform.applicationWindows().activate(window.winId());
}

}  // namespace lumiwren
