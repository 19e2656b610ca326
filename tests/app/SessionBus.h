#pragma once

#include "support/Process.h"

#include <QDBusConnection>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// A session bus of the test's own.
class SessionBus {
public:
  /// Starts on demand those of the installed services that are named, with `environment` on top of the
  /// test's.
  explicit SessionBus(const std::vector<QString> &services = {},
                      const std::vector<std::pair<std::string, std::string>> &environment = {}) {
    for (const QString &service : services) {
      const QString file = service + QStringLiteral(".service");
      if (!QFile::copy(QStringLiteral("/usr/share/dbus-1/services/") + file, directory_.filePath(file))) {
        throw std::runtime_error("not installed: " + file.toStdString());
      }
    }
    QFile configuration(directory_.filePath(QStringLiteral("bus.conf")));
    configuration.open(QIODevice::WriteOnly);
    configuration.write(
        QStringLiteral(
            "<busconfig><type>session</type><listen>unix:dir=%1</listen><servicedir>%1</servicedir>"
            "<policy context='default'><allow send_destination='*'/><allow receive_sender='*'/><allow "
            "own='*'/></policy>"
            "</busconfig>")
            .arg(directory_.path())
            .toUtf8());
    configuration.close();
    daemon_.emplace(Process::Options{.command = {"dbus-daemon", "--nofork", "--nopidfile", "--print-address",
                                                 "--config-file=" + configuration.fileName().toStdString()},
                                     .environment = environment});
    const auto address = daemon_->readLine();
    if (!address) {
      throw std::runtime_error("dbus-daemon did not come up");
    }
    address_ = *address;
  }

  const std::string &address() const { return address_; }

  /// Each call is a connection, and so a client, of its own.
  QDBusConnection connect() const {
    static int count = 0;
    return QDBusConnection::connectToBus(QString::fromStdString(address_),
                                         QStringLiteral("test-%1").arg(++count));
  }

  /// The bus ends, as at the end of a session.
  void stop() { daemon_.reset(); }

private:
  QTemporaryDir directory_;
  std::optional<Process> daemon_;
  std::string address_;
};

}  // namespace lumiwren::testing
