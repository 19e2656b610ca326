#include "ai/KeychainManager.h"

#include "base/Unicode.h"

namespace lumiwren {

std::optional<Secret> KeychainManager::getAPIKey() {
  auto key = store_.copyMatching(service, apiKeyAccount);
  if (key && !unicode::isValidUTF8(key->reveal())) {
    return std::nullopt;
  }
  return key;
}

bool KeychainManager::hasAPIKey() {
  return store_.contains(service, apiKeyAccount);
}

bool KeychainManager::saveAPIKey(const Secret &key) {
  if (!unicode::isValidUTF8(key.reveal())) {
    return false;
  }
  deleteAPIKey();
  return store_.add(service, apiKeyAccount, key) == SecretStatus::Success;
}

bool KeychainManager::deleteAPIKey() {
  const auto status = store_.remove(service, apiKeyAccount);
  return status == SecretStatus::Success || status == SecretStatus::ItemNotFound;
}

}  // namespace lumiwren
