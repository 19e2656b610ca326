#include "app/AppDelegate.h"
#include "app/AppearanceController.h"
#include "app/CommandLine.h"
#include "app/Commands.h"
#include "app/ProgramInstance.h"
#include "app/RunningProgram.h"
#include "app/SetAPIKey.h"
#include "app/TerminationSignals.h"
#include "platform/linux/session/DisplayEnd.h"
#include "platform/linux/session/LinuxPlatform.h"
#include "settings/APIKeyWindow.h"
#include "settings/AboutWindowController.h"
#include "settings/ActionsSettingsWindowController.h"
#include "settings/UpdateWindow.h"
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
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace {

using namespace lumiwren;

constexpr std::chrono::milliseconds quitLimit{1000};

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

/// Ends the process as it is: some thread may still be at work.
[[noreturn]] void leave(int status) {
  std::fflush(nullptr);
  std::_Exit(status);
}

/// Ends the process, after everything that may still use what is destroyed here has ended.
int ended(MainQueue &mainQueue, int status) {
  mainQueue.close();
  if (!Task::endAll(quitLimit)) {
    leave(status);  // A task is held up inside a library.
  }
  return status;
}

/// Makes this the session's one program. Otherwise the exit status: the one that runs already has been asked
/// for its menu, or does not answer.
std::optional<int> exitStatusUnlessFirst(ProgramInstance &instance, const QDBusConnection &bus) {
  while (!instance.claim()) {
    switch (RunningProgram(bus).activate().outcome) {
      case RunningProgram::Outcome::Done:
        return EXIT_SUCCESS;
      case RunningProgram::Outcome::Gone:
      case RunningProgram::Outcome::NotRunning:
        continue;  // It was about to end.
      case RunningProgram::Outcome::Refused:
      case RunningProgram::Outcome::Silent:
        std::fputs("lumiwren: it is running already, but does not answer\n", stderr);
        return EXIT_FAILURE;
    }
  }
  return std::nullopt;
}

int runApplication(int argc, char **argv) {
  const OpenAIEndpoint endpoint = OpenAIEndpoint::fromEnvironment();
  const TerminationSignals signals;
  keepTextOutOfLogs();
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("lumiwren"));
  QApplication::setDesktopFileName(QLatin1String(ProgramInstance::name));
  QApplication::setQuitOnLastWindowClosed(false);
  const Handle displayEnd = observeDisplayEnd([] { leave(EXIT_FAILURE); });

  const auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("lumiwren"));
  ProgramInstance instance(bus);
  if (const auto status = exitStatusUnlessFirst(instance, bus)) {
    leave(*status);
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
  UpdateWindow updateWindow(platform->applicationWindows());
  const std::unique_ptr<Updater> updater = platform->makeUpdater(updateWindow);
  UpdateManager updates(*updater);
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
  instance.serve({.showMenu = [&] { delegate.showPopover(QCursor::pos()); },
                  .showSettings = [&] { actionsSettings.showWindow(); },
                  .quit = [] { QApplication::quit(); },
                  .actionNamed = [&](const QString &name) { return delegate.actionNamed(name); },
                  .actions = [&] { return delegate.actionList(); }});

  delegate.applicationDidFinishLaunching();
  // After everything that is waited for: there is no window yet.
  const AppearanceController appearance(platform->desktopAppearance());
  const int status = QApplication::exec();
  instance.resign();
  delegate.applicationWillTerminate();
  return ended(mainQueue, status);
}

}  // namespace

int main(int argc, char **argv) {
  const auto commandLine = CommandLine::parse(
      std::span<const char *const>(argv, static_cast<std::size_t>(argc)).subspan(argc > 0));
  try {
    switch (commandLine.command) {
      case CommandLine::Command::Start:
        return runApplication(argc, argv);
      case CommandLine::Command::SetAPIKey:
        return setAPIKey();
      case CommandLine::Command::Version:
        std::puts("lumiwren " LUMIWREN_VERSION);
        return EXIT_SUCCESS;
      case CommandLine::Command::Help:
        std::fputs(CommandLine::usage(), stdout);
        return EXIT_SUCCESS;
      case CommandLine::Command::Unknown:
        std::fputs(CommandLine::usage(), stderr);
        return 2;
      default:
        // The toolkit's thread for the bus uses what an orderly end destroys.
        leave(askRunningProgram(commandLine));
    }
  } catch (const std::exception &error) {
    std::fprintf(stderr, "lumiwren: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
