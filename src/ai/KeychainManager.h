#pragma once

#include "base/Secret.h"
#include "platform/SecretStore.h"

#include <optional>
#include <string_view>

namespace lumiwren {

/// The user's API key, kept in the session's secret store and nowhere else. Not on the main thread, because
/// the store may wait (see SecretStore).
class KeychainManager {
public:
  static constexpr std::string_view service = "com.lumiwren.app";
  static constexpr std::string_view apiKeyAccount = "openai-api-key";

  explicit KeychainManager(SecretStore &store) : store_(store) {}

  /// The key as it was stored, also when it is empty; nothing when there is none, it cannot be read, or it is
  /// no valid UTF-8.
  std::optional<Secret> getAPIKey();
  /// Whether a key is stored, one in a locked keyring included. Never asks the user to unlock it.
  bool hasAPIKey();
  /// Replaces the key; true when it is stored now. Deletes first, so a refused add leaves no key.
  bool saveAPIKey(const Secret &key);
  /// True when no key is stored afterwards.
  bool deleteAPIKey();

private:
  SecretStore &store_;
};

}  // namespace lumiwren
