#include "app/AppDelegate.h"
#include "app/AppearanceController.h"
#include "app/ProgramInstance.h"
#include "app/SetAPIKey.h"
#include "app/TerminationSignals.h"
#include "platform/linux/session/LinuxPlatform.h"
#include "settings/APIKeyWindow.h"
#include "settings/AboutWindowController.h"
#include "settings/ActionsSettingsWindowController.h"
#include "settings/WelcomeWindow.h"
#include "ui/MainQueueLoop.h"

#include <QApplication>
#include <QCursor>
#include <QDBusConnection>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <string_view>

namespace {

using namespace lumiwren;

constexpr std::chrono::milliseconds quitLimit{1000};

constexpr char usage[] =
    "usage: lumiwren                  start the program\n"
    "       lumiwren --set-api-key    store the API key that is read from standard input in the keyring\n"
    "       lumiwren --version\n"
    "       lumiwren --help\n";

/// Qt's own log of the accessibility tree prints names and typed text; nothing switches it on in this
/// program.
void keepTextOutOfLogs() {
  static QLoggingCategory::CategoryFilter previous = nullptr;
  previous = QLoggingCategory::installFilter([](QLoggingCategory *category) {
    previous(category);
    for (const QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg}) {
      if (std::string_view(category->categoryName()).starts_with("qt.accessibility")) {
        category->setEnabled(type, false);
      }
    }
  });
}

/// Ends the process, after everything that may still use what is destroyed here has ended.
int ended(MainQueue &mainQueue, int status) {
  mainQueue.close();
  if (!Task::endAll(quitLimit)) {
    // A task is held up inside a library.
    std::fflush(nullptr);
    std::_Exit(status);
  }
  return status;
}

/// The program that is running already shows its menu.
int activateRunningProgram(const ProgramInstance &instance) {
  if (!instance.activateFirst()) {
    std::fputs("lumiwren: it is running already, but does not answer\n", stderr);
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}

int runApplication(int argc, char **argv) {
  const OpenAIEndpoint endpoint = OpenAIEndpoint::fromEnvironment();
  const TerminationSignals signals;
  keepTextOutOfLogs();
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("lumiwren"));
  QApplication::setDesktopFileName(QStringLiteral("lumiwren"));
  QApplication::setQuitOnLastWindowClosed(false);

  const auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("lumiwren"));
  std::function<void()> openMenu = [] {};
  const ProgramInstance instance(bus, [&openMenu] { openMenu(); });
  if (!instance.isFirst()) {
    return activateRunningProgram(instance);
  }

  MainQueue mainQueue;
  const MainQueueLoop loop(mainQueue);
  const QSocketNotifier terminationRequested(signals.fileDescriptor(), QSocketNotifier::Read);
  QObject::connect(&terminationRequested, &QSocketNotifier::activated, &application, &QApplication::quit);

  const std::unique_ptr<Platform> platform = makeLinuxPlatform(mainQueue);
  KeychainManager keychain(platform->secretStore());
  OpenAIAPIService service(platform->httpClient(), keychain, mainQueue, endpoint);
  CustomActionManager actions(platform->userDefaults());
  HotkeyManager hotkeys(platform->eventMonitors(), actions, mainQueue);
  LaunchAtLoginManager launchAtLogin(platform->loginItem(), platform->userDefaults(), mainQueue);
  UpdateManager updates(platform->updater());
  ExplanationPopupController popup(platform->eventMonitors(), platform->pasteboard(), platform->screens(),
                                   platform->panelWindows(), service, keychain, mainQueue);
  ScreenCaptureManager screenCapture(platform->screenRecording(), platform->childProcesses(),
                                     platform->workspace(), mainQueue);
  KeychainQueue keychainQueue(keychain, mainQueue);
  const KeyFormServices keyForm{keychainQueue, service, mainQueue};
  auto &applicationWindows = platform->applicationWindows();
  WelcomeWindow welcome(keyForm, platform->workspace(), applicationWindows);
  APIKeyWindow apiKey(keyForm, applicationWindows);
  AboutWindowController about(applicationWindows, platform->bundle());
  ActionsSettingsWindowController actionsSettings(actions, platform->eventMonitors(), platform->screens(),
                                                  platform->panelWindows(), applicationWindows, mainQueue);
  AppDelegate delegate({{*platform, mainQueue, actions, keychain, service, hotkeys, screenCapture, popup},
                        launchAtLogin,
                        updates},
                       bus,
                       {.showActions = [&] { actionsSettings.showWindow(); },
                        .showAPIKeyInput = [&] { apiKey.showWindow(); },
                        .showAbout = [&] { about.showWindow(); },
                        .showFirstLaunchWindow = [&] { welcome.showWindow(); }},
                       [] { QApplication::quit(); });
  openMenu = [&delegate] { delegate.showPopover(QCursor::pos()); };

  delegate.applicationDidFinishLaunching();
  // After everything that is waited for: there is no window yet.
  const AppearanceController appearance(platform->desktopAppearance());
  const int status = QApplication::exec();
  delegate.applicationWillTerminate();
  return ended(mainQueue, status);
}

}  // namespace

int main(int argc, char **argv) {
  const std::string_view option = argc > 1 ? argv[1] : "";
  try {
    if (option == "--set-api-key" && argc == 2) {
      return setAPIKey();
    }
    if (option == "--version" && argc == 2) {
      std::puts("lumiwren " LUMIWREN_VERSION);
      return EXIT_SUCCESS;
    }
    if (option == "--help" && argc == 2) {
      std::fputs(usage, stdout);
      return EXIT_SUCCESS;
    }
    if (argc > 1) {
      std::fputs(usage, stderr);
      return 2;
    }
    return runApplication(argc, argv);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "lumiwren: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
