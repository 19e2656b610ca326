#include "app/AppDelegate.h"
#include "app/AppearanceController.h"
#include "app/SetAPIKey.h"
#include "app/TerminationSignals.h"
#include "platform/linux/session/LinuxPlatform.h"
#include "ui/MainQueueLoop.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
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

int runApplication(int argc, char **argv) {
  const OpenAIEndpoint endpoint = OpenAIEndpoint::fromEnvironment();
  const TerminationSignals signals;
  keepTextOutOfLogs();
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("lumiwren"));
  QApplication::setApplicationDisplayName(QStringLiteral("Lumiwren"));
  QApplication::setDesktopFileName(QStringLiteral("lumiwren"));
  QApplication::setQuitOnLastWindowClosed(false);

  MainQueue mainQueue;
  const MainQueueLoop loop(mainQueue);
  const QSocketNotifier terminationRequested(signals.fileDescriptor(), QSocketNotifier::Read);
  QObject::connect(&terminationRequested, &QSocketNotifier::activated, &application, &QApplication::quit);

  const std::unique_ptr<Platform> platform = makeLinuxPlatform(mainQueue);
  KeychainManager keychain(platform->secretStore());
  OpenAIAPIService service(platform->httpClient(), keychain, mainQueue, endpoint);
  CustomActionManager actions(platform->userDefaults());
  HotkeyManager hotkeys(platform->eventMonitors(), actions, mainQueue);
  ExplanationPopupController popup(platform->eventMonitors(), platform->pasteboard(), platform->screens(),
                                   platform->panelWindows(), service, keychain, mainQueue);
  ScreenCaptureManager screenCapture(platform->screenRecording(), platform->childProcesses(),
                                     platform->workspace(), mainQueue);
  AppDelegate delegate({*platform, mainQueue, actions, keychain, service, hotkeys, screenCapture, popup},
                       [] { QApplication::quit(); });

  delegate.applicationDidFinishLaunching();
  // After everything that is waited for: there is no window yet.
  const AppearanceController appearance(platform->desktopAppearance());
  const int status = QApplication::exec();
  delegate.applicationWillTerminate();

  mainQueue.close();
  if (!Task::endAll(quitLimit)) {
    // A task is held up inside a library and may still use what would be destroyed here.
    std::fflush(nullptr);
    std::_Exit(status);
  }
  return status;
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
