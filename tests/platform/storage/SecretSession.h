#pragma once

#include "platform/linux/session/SessionSecretStore.h"
#include "support/Process.h"
#include "support/TemporaryFolder.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace lumiwren::testing {

/// A D-Bus session with nothing of the user's: folders of its own, no display, and no service that is started
/// unasked. The environment of this process points to it.
class SecretSession {
public:
  SecretSession();

  /// The real keyring, with an unlocked default collection that outlives the keyring.
  void startKeyring();
  /// A service that behaves as tests/support/lab/helpers/secret_service.py describes.
  void startService(const std::string &behaviour);
  /// Kills the keyring or service, and returns when its name is free.
  void killService();
  /// The prompt or other event that the misbehaving service tells of next; waits for it.
  std::string nextEvent();
  void lockKeyring() const;
  void killBus();
  /// The bus that the environment points to, which may be none.
  static QDBusConnection bus();

  /// What `secret-tool` does with the arguments; its output.
  static std::string secretTool(std::vector<std::string> arguments, const std::string &input = {});
  static void storeWithTool(const std::string &secret, std::vector<std::string> attributes);
  static std::size_t itemCount(const std::string &service, const std::string &account);

private:
  void waitForOwner(bool owned) const;

  TemporaryFolder folder_;
  std::optional<Process> bus_;
  std::optional<Process> service_;
};

/// The program's own store, of whichever session there is when it is asked.
class StoreOfSession : public SessionSecretStore {
public:
  explicit StoreOfSession(const Limits &limits = defaultLimits)
      : SessionSecretStore(&SecretSession::bus, limits) {}
};

}  // namespace lumiwren::testing
