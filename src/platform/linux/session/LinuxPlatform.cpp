#include "platform/linux/session/LinuxPlatform.h"

#include "platform/linux/CurlHTTPClient.h"
#include "platform/linux/JSONBundle.h"
#include "platform/linux/JSONUserDefaults.h"
#include "platform/linux/SpawnedProcesses.h"
#include "platform/linux/XDGLoginItem.h"
#include "platform/linux/appearance/PortalDesktopAppearance.h"
#include "platform/linux/recognition/PNGDecoder.h"
#include "platform/linux/recognition/TesseractRecognizer.h"
#include "platform/linux/session/DesktopWorkspace.h"
#include "platform/linux/session/LocalEventMonitors.h"
#include "platform/linux/session/SessionSecretStore.h"
#include "platform/linux/session/UnavailableSession.h"
#include "platform/linux/updates/StandardUpdater.h"
#include "platform/linux/x11/X11Session.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QGuiApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::string_view moreTerminalsKey = "terminalWindowClasses";

Handle watchReadable(int fileDescriptor, std::function<void()> readable) {
  auto notifier = std::make_shared<QSocketNotifier>(fileDescriptor, QSocketNotifier::Read);
  QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), std::move(readable));
  return Handle([notifier] { notifier->setEnabled(false); });
}

/// Where the programs are that this one starts: beside it, or where they are installed.
std::filesystem::path helpersFolder() {
  const std::filesystem::path folder = QCoreApplication::applicationDirPath().toStdString();
  const auto installed = folder / ".." / "libexec" / "lumiwren";
  std::error_code ignored;
  return std::filesystem::is_directory(installed, ignored) ? installed : folder;
}

std::unique_ptr<X11Session> makeX11Session(MainQueue &mainQueue, UserDefaults &defaults) {
  const auto *const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr) {
    std::fprintf(stderr,
                 "lumiwren: this is no X11 session (\"%s\"): hotkeys and selected text are out of reach\n",
                 qPrintable(QGuiApplication::platformName()));
    return nullptr;
  }
  const std::string folder = helpersFolder().string();
  return std::make_unique<X11Session>(
      mainQueue, X11Session::Options{.toolkitConnection = x11->connection(),
                                     .pixelsPerPoint = qGuiApp->devicePixelRatio(),
                                     .holder = folder + "/lumiwren-pasteboard",
                                     .screenshotTool = folder + "/lumiwren-screencapture",
                                     .moreTerminals = defaults.stringArrayForKey(moreTerminalsKey),
                                     .watchReadable = watchReadable});
}

/// Other programs' presses come from the display server, our own from the toolkit.
class SessionEventMonitors : public EventMonitors {
public:
  explicit SessionEventMonitors(X11Session *session) : session_(session) {}

  Handle addGlobalMonitor(std::uint32_t mask, GlobalHandler handler) override {
    return session_ != nullptr ? session_->addGlobalMonitor(mask, std::move(handler)) : Handle();
  }
  Handle addLocalMonitor(std::uint32_t mask, LocalHandler handler) override {
    return local_.addLocalMonitor(mask, std::move(handler));
  }
  std::uint32_t currentTime() override { return session_ != nullptr ? session_->currentTime() : 0; }

private:
  X11Session *const session_;
  LocalEventMonitors local_;
};

class LinuxPlatform : public Platform {
public:
  explicit LinuxPlatform(MainQueue &mainQueue)
      : mainQueue_(mainQueue), x11_(makeX11Session(mainQueue, userDefaults_)) {}

  EventMonitors &eventMonitors() override { return eventMonitors_; }
  Pasteboard &pasteboard() override { return x11_ ? x11_->pasteboard() : unavailable_.pasteboard; }
  SelectionCopy &selectionCopy() override {
    return x11_ ? x11_->selectionCopy() : unavailable_.selectionCopy;
  }
  AccessibilityTrust &accessibilityTrust() override {
    return x11_ ? x11_->accessibilityTrust() : unavailable_.accessibilityTrust;
  }
  Screens &screens() override { return x11_ ? x11_->screens() : unavailable_.screens; }
  PanelWindows &panelWindows() override { return x11_ ? x11_->panelWindows() : unavailable_.panelWindows; }
  ApplicationWindows &applicationWindows() override {
    return x11_ ? x11_->applicationWindows() : unavailable_.applicationWindows;
  }
  ScreenRecording &screenRecording() override {
    return x11_ ? x11_->screenRecording() : unavailable_.screenRecording;
  }
  ImageDecoder &imageDecoder() override { return imageDecoder_; }
  TextRecognizer &textRecognizer() override { return textRecognizer_; }
  HTTPClient &httpClient() override { return httpClient_; }
  SecretStore &secretStore() override { return secretStore_; }
  UserDefaults &userDefaults() override { return userDefaults_; }
  LoginItem &loginItem() override { return loginItem_; }
  DesktopAppearance &desktopAppearance() override {
    if (!desktopAppearance_) {
      // On the connection that the toolkit has for itself, once the program is up; to open it takes a while.
      desktopAppearance_.emplace(QDBusConnection::sessionBus());
    }
    return *desktopAppearance_;
  }
  ChildProcesses &childProcesses() override { return childProcesses_; }
  Workspace &workspace() override { return workspace_; }
  const Bundle &bundle() override { return bundle_; }
  std::unique_ptr<Updater> makeUpdater(UpdateUserDriver &driver) override {
    return std::make_unique<StandardUpdater>(
        StandardUpdater::Services{bundle_, httpClient_, userDefaults_, workspace_, mainQueue_}, driver);
  }

private:
  MainQueue &mainQueue_;
  JSONUserDefaults userDefaults_{JSONUserDefaults::defaultFile()};
  CurlHTTPClient httpClient_;
  SessionSecretStore secretStore_;
  XDGLoginItem loginItem_{XDGLoginItem::defaultFile(), QCoreApplication::applicationFilePath().toStdString()};
  const std::unique_ptr<X11Session> x11_;
  SessionEventMonitors eventMonitors_{x11_.get()};
  PNGDecoder imageDecoder_;
  TesseractRecognizer textRecognizer_;
  SpawnedProcesses childProcesses_;
  DesktopWorkspace workspace_;
  JSONBundle bundle_{JSONBundle::fileFor(QCoreApplication::applicationDirPath().toStdString())};
  std::optional<PortalDesktopAppearance> desktopAppearance_;
  struct {
    UnavailablePasteboard pasteboard;
    UnavailableSelectionCopy selectionCopy;
    UnavailableAccessibility accessibilityTrust;
    UnavailableScreens screens;
    UnavailablePanelWindows panelWindows;
    UnavailableApplicationWindows applicationWindows;
    UnavailableScreenRecording screenRecording;
  } unavailable_;
};

}  // namespace

std::unique_ptr<Platform> makeLinuxPlatform(MainQueue &mainQueue) {
  return std::make_unique<LinuxPlatform>(mainQueue);
}

std::unique_ptr<SecretStore> makeSecretStore() {
  return std::make_unique<SessionSecretStore>();
}

}  // namespace lumiwren
