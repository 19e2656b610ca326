#include "platform/linux/session/DesktopWorkspace.h"

#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <array>

namespace lumiwren {
namespace {

struct SettingsProgram {
  const char *desktop;  // as XDG_CURRENT_DESKTOP has it
  const char *program;
  const char *page;
};

// What each desktop's own settings program is called, with its page about what programs may do, if any.
constexpr std::array settingsPrograms{
    SettingsProgram{"GNOME", "gnome-control-center", "privacy"},
    SettingsProgram{"KDE", "systemsettings", ""},
    SettingsProgram{"KDE", "systemsettings5", ""},
    SettingsProgram{"XFCE", "xfce4-settings-manager", ""},
    SettingsProgram{"X-Cinnamon", "cinnamon-settings", "privacy"},
    SettingsProgram{"MATE", "mate-control-center", ""},
    SettingsProgram{"LXQt", "lxqt-config", ""},
};

bool openSettings() {
  const QStringList desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
  for (const auto &[desktop, program, page] : settingsPrograms) {
    const QString path = QStandardPaths::findExecutable(QLatin1String(program));
    if (desktops.contains(QLatin1String(desktop), Qt::CaseInsensitive) && !path.isEmpty()) {
      const auto arguments = *page == '\0' ? QStringList() : QStringList(QLatin1String(page));
      return QProcess::startDetached(path, arguments);
    }
  }
  return false;
}

}  // namespace

bool DesktopWorkspace::openURL(const std::string &url) {
  const QUrl address(QString::fromStdString(url), QUrl::StrictMode);
  if (address.scheme() == QLatin1String("x-apple.systempreferences")) {
    return openSettings();
  }
  return address.isValid() && QDesktopServices::openUrl(address);
}

}  // namespace lumiwren
