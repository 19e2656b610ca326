#include "app/AppDelegate.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QPushButton>

#include <chrono>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::chrono::milliseconds accessibilityAlertDelay{1000};
constexpr std::chrono::milliseconds preparationDelay{100};

void fill(QMessageBox &alert, const QString &text, const QString &informativeText) {
  alert.setIcon(QMessageBox::Warning);
  alert.setTextFormat(Qt::PlainText);
  alert.setText(text);
  alert.setInformativeText(informativeText);
}

/// Tells the user about a missing permission; true when it is to be given.
bool wantsSystemSettings(const QString &text, const QString &informativeText) {
  QMessageBox alert;
  fill(alert, text, informativeText);
  const QAbstractButton *const open =
      alert.addButton(QStringLiteral("Open System Settings"), QMessageBox::AcceptRole);
  alert.addButton(QStringLiteral("Later"), QMessageBox::RejectRole);
  alert.exec();
  return alert.clickedButton() == open;
}

}  // namespace

AppDelegate::AppDelegate(const ActionDispatch::Services &services, std::function<void()> terminate)
    : services_(services),
      terminate_(std::move(terminate)),
      dispatch_(services, {.showAccessibilityAlert = [this] { showAccessibilityAlert(); },
                           .showScreenRecordingAlert = [this] { showScreenRecordingAlert(); }}) {}

void AppDelegate::applicationDidFinishLaunching() {
  setupMenuBar();
  dispatch_.setupHotkey();
  checkAccessibilityPermission();
  // When everything else is up: the first panel then has only to be shown.
  services_.mainQueue.postAfter(preparationDelay,
                                [&popup = services_.popup, &screenCapture = services_.screenCapture] {
                                  popup.prepare();
                                  screenCapture.removeStaleCaptures().detach();
                                });
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
  const bool opens = wantsSystemSettings(
      QStringLiteral("Accessibility Permission Required"),
      QStringLiteral("Lumiwren needs accessibility permission to copy selected text. Please grant access in "
                     "System Settings > Privacy & Security > Accessibility."));
  if (opens) {
    services_.platform.accessibilityTrust().isProcessTrustedWithPrompt();
  }
}

void AppDelegate::showScreenRecordingAlert() {
  const bool opens = wantsSystemSettings(
      QStringLiteral("Screen Recording Permission Required"),
      QStringLiteral("Lumiwren needs screen recording permission to capture screen regions for OCR. Please "
                     "grant access in System Settings > Privacy & Security > Screen Recording."));
  if (opens && !services_.screenCapture.requestScreenRecordingPermission()) {
    QMessageBox alert;
    fill(alert, QStringLiteral("No System Settings Found"),
         QStringLiteral("This desktop has no settings for screen recording. Lumiwren captures the screen in "
                        "X11 sessions: choose one when you log in."));
    alert.exec();
  }
}

}  // namespace lumiwren
