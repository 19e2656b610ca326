#pragma once

#include "platform/linux/LibsecretSecretStore.h"

#include <QDBusConnection>

#include <functional>
#include <utility>

namespace lumiwren {

/// The Secret Service, of which the one question that every start of the program asks is put without the
/// library: that takes megabytes, which a program with a key can do without until the key is used.
class SessionSecretStore : public LibsecretSecretStore {
public:
  /// Asks on the connection that `bus` returns.
  explicit SessionSecretStore(std::function<QDBusConnection()> bus = &QDBusConnection::sessionBus,
                              const Limits &limits = defaultLimits)
      : LibsecretSecretStore(limits), bus_(std::move(bus)) {}

  bool contains(std::string_view service, std::string_view account) override;

private:
  const std::function<QDBusConnection()> bus_;
};

}  // namespace lumiwren
