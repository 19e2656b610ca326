#pragma once

#include "platform/SecretStore.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

namespace lumiwren {

/// Reads and changes the Secret Service of the desktop session (GNOME Keyring, KWallet, KeePassXC) through
/// libsecret. Items go to the default collection with the attributes "service" and "account", by which items
/// of any origin are found, those of `secret-tool store` for example.
///
/// Operations take turns. Nothing of GLib is touched before the first one; the connection and the encrypted
/// session stay open for the next.
class LibsecretSecretStore : public SecretStore {
public:
  /// How long one operation waits for the service's answers, all together, and for the user where the service
  /// asks to be unlocked.
  struct Limits {
    std::chrono::milliseconds answers;
    std::chrono::milliseconds prompt;
  };
  static constexpr Limits defaultLimits{std::chrono::seconds(5), std::chrono::minutes(2)};

  explicit LibsecretSecretStore(const Limits &limits = defaultLimits);
  ~LibsecretSecretStore() override;

  std::optional<Secret> copyMatching(std::string_view service, std::string_view account) override;
  SecretStatus add(std::string_view service, std::string_view account, const Secret &secret) override;
  SecretStatus remove(std::string_view service, std::string_view account) override;

protected:
  const Limits &limits() const { return limits_; }

private:
  class Session;
  class Operation;

  template <typename Result, typename Use>
  std::optional<Result> perform(Use use);

  const Limits limits_;
  std::timed_mutex mutex_;
  std::unique_ptr<Session> session_;  // guarded by mutex_
};

}  // namespace lumiwren
