#pragma once

#include "platform/linux/LibsecretSecretStore.h"

namespace lumiwren {

/// The Secret Service, of which the one question that every start of the program asks is put without the
/// library: that takes megabytes, which a program with a key can do without until the key is used.
class SessionSecretStore : public LibsecretSecretStore {
public:
  bool contains(std::string_view service, std::string_view account) override;
};

}  // namespace lumiwren
