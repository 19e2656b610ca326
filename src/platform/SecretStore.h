#pragma once

#include "base/Secret.h"

#include <optional>
#include <string_view>

namespace lumiwren {

enum class SecretStatus { Success, ItemNotFound, Failure };

/// The session's store of passwords. Any thread but the main one, unless stated: every operation may wait for
/// the store, for a bounded time, and for the user where the store asks to be unlocked.
class SecretStore {
public:
  virtual ~SecretStore() = default;

  /// The secret's bytes; empty when there is no such item, when the store is absent or does not answer, or
  /// when the user does not unlock it.
  virtual std::optional<Secret> copyMatching(std::string_view service, std::string_view account) = 0;
  /// Whether there is such an item, one that is locked included; false also when the store is absent or does
  /// not answer. Never asks the user for anything.
  virtual bool contains(std::string_view service, std::string_view account) = 0;
  /// Stores the secret, in place of one that was added before under the same service and account.
  virtual SecretStatus add(std::string_view service, std::string_view account, const Secret &secret) = 0;
  /// Removes every item of the service and account, whoever has stored it.
  virtual SecretStatus remove(std::string_view service, std::string_view account) = 0;
};

}  // namespace lumiwren
