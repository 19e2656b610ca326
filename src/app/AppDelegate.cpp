#include "app/AppDelegate.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QPushButton>

#include <chrono>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::chrono::milliseconds accessibilityAlertDelay{1000};
constexpr std::chrono::milliseconds panelPreparationDelay{100};

}  // namespace

AppDelegate::AppDelegate(const ActionDispatch::Services &services, std::function<void()> terminate)
    : services_(services),
      terminate_(std::move(terminate)),
      dispatch_(services, [this] { showAccessibilityAlert(); }) {}

void AppDelegate::applicationDidFinishLaunching() {
  setupMenuBar();
  dispatch_.setupHotkey();
  checkAccessibilityPermission();
  // When everything else is up: the first panel then has only to be shown.
  services_.mainQueue.postAfter(panelPreparationDelay, [&popup = services_.popup] { popup.prepare(); });
}

void AppDelegate::applicationWillTerminate() {
  services_.hotkeys.stopMonitoring();
}

void AppDelegate::setupMenuBar() {
  statusItem_.emplace(terminate_);
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

void AppDelegate::showAccessibilityAlert() {
  QMessageBox alert;
  alert.setIcon(QMessageBox::Warning);
  alert.setTextFormat(Qt::PlainText);
  alert.setText(QStringLiteral("Accessibility Permission Required"));
  alert.setInformativeText(QStringLiteral(
      "Lumiwren needs accessibility permission to copy selected text. Please grant access in System "
      "Settings > Privacy & Security > Accessibility."));
  const QAbstractButton *const open =
      alert.addButton(QStringLiteral("Open System Settings"), QMessageBox::AcceptRole);
  alert.addButton(QStringLiteral("Later"), QMessageBox::RejectRole);
  alert.exec();
  if (alert.clickedButton() == open) {
    services_.platform.accessibilityTrust().isProcessTrustedWithPrompt();
  }
}

}  // namespace lumiwren
