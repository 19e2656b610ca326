#include "platform/storage/SecretSession.h"

#include "platform/linux/GLibWait.h"

#include <gio/gio.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace lumiwren::testing {

namespace {

constexpr auto secretsName = "org.freedesktop.secrets";
constexpr auto busConfiguration =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

std::string run(std::vector<std::string> command, const std::string &input = {}) {
  const auto program = command.front();
  Process process(std::move(command));
  process.write(input);
  process.closeInput();
  std::string output;
  while (const auto line = process.readLine()) {
    output += *line + "\n";
  }
  if (!process.wait()) {
    throw std::runtime_error(program + " did not end");
  }
  return output;
}

}  // namespace

SecretSession::SecretSession() {
  for (const auto *name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
    ::unsetenv(name);
  }
  for (const auto *name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
    const auto folder = folder_.path() / name;
    std::filesystem::create_directory(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    ::setenv(name, folder.c_str(), 1);
  }
  const auto configuration = folder_.path() / "bus.conf";
  std::ofstream(configuration) << busConfiguration;
  bus_.emplace(std::vector<std::string>{"dbus-daemon", "--config-file=" + configuration.string(), "--nofork",
                                        "--nopidfile", "--print-address=1"});
  const auto address = bus_->readLine();
  if (!address) {
    throw std::runtime_error("dbus-daemon did not come up");
  }
  ::setenv("DBUS_SESSION_BUS_ADDRESS", address->c_str(), 1);
}

void SecretSession::startKeyring() {
  service_.emplace(
      std::vector<std::string>{"gnome-keyring-daemon", "--unlock", "--components=secrets", "--foreground"});
  service_->write("the keyring's password");
  service_->closeInput();
  waitForOwner(true);
}

void SecretSession::startService(const std::string &behaviour) {
  service_.emplace(std::vector<std::string>{
      "/usr/bin/python3", LUMIWREN_SOURCE_DIR "/tests/support/lab/helpers/secret_service.py", behaviour});
  if (!service_->waitForLine("ready")) {
    throw std::runtime_error("the misbehaving service did not come up");
  }
}

void SecretSession::killService() {
  service_->kill(SIGKILL);
  service_.reset();
  waitForOwner(false);
}

std::string SecretSession::nextEvent() {
  return service_->readLine().value_or("");
}

void SecretSession::lockKeyring() const {
  run({"dbus-send", "--session", "--print-reply", std::string("--dest=") + secretsName,
       "/org/freedesktop/secrets", "org.freedesktop.Secret.Service.Lock",
       "array:objpath:/org/freedesktop/secrets/collection/login"});
}

void SecretSession::killBus() {
  service_.reset();
  bus_.reset();
}

QDBusConnection SecretSession::bus() {
  // Each has an address of its own, by which its connection is found again.
  const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
  return QDBusConnection::connectToBus(address, address);
}

std::string SecretSession::secretTool(std::vector<std::string> arguments, const std::string &input) {
  // A secret is printed without the end of a line, up to which a process's output is read.
  arguments.insert(arguments.begin(), {"sh", "-c", "secret-tool \"$@\" 2>&1; echo", "sh"});
  return run(std::move(arguments), input);
}

void SecretSession::storeWithTool(const std::string &secret, std::vector<std::string> attributes) {
  attributes.insert(attributes.begin(), {"store", "--label=by hand"});
  secretTool(std::move(attributes), secret);
}

std::size_t SecretSession::itemCount(const std::string &service, const std::string &account) {
  const auto found = secretTool({"search", "--all", "service", service, "account", account});
  std::size_t count = 0;
  for (auto at = found.find("[/"); at != std::string::npos; at = found.find("[/", at + 1)) {
    ++count;
  }
  return count;
}

void SecretSession::waitForOwner(bool owned) const {
  const GMainContextRef context(g_main_context_new());
  GLibWait wait(context.get(), patience);
  const auto connected = wait.result([&](auto callback, auto data) {
    g_dbus_connection_new_for_address(
        std::getenv("DBUS_SESSION_BUS_ADDRESS"),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, wait.cancellable(), callback, data);
  });
  const GObjectRef<GDBusConnection> bus(
      connected ? g_dbus_connection_new_for_address_finish(connected.get(), nullptr) : nullptr);
  if (!bus) {
    throw std::runtime_error("cannot connect to the bus");
  }
  std::optional<bool> state;
  const auto watch = g_bus_watch_name_on_connection(
      bus.get(), secretsName, G_BUS_NAME_WATCHER_FLAGS_NONE,
      [](GDBusConnection *, const gchar *, const gchar *, gpointer data) {
        *static_cast<std::optional<bool> *>(data) = true;
      },
      [](GDBusConnection *, const gchar *, gpointer data) {
        *static_cast<std::optional<bool> *>(data) = false;
      },
      &state, nullptr);
  while (state != owned) {
    g_main_context_iteration(context.get(), TRUE);
  }
  g_bus_unwatch_name(watch);
}

}  // namespace lumiwren::testing
