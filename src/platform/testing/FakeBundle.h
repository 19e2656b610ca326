#pragma once

#include "platform/Bundle.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace lumiwren::testing {

/// A property list that a test writes.
class FakeBundle : public Bundle {
public:
  std::optional<std::string> stringForKey(std::string_view key) const override {
    const auto found = strings.find(key);
    return found == strings.end() ? std::nullopt : std::optional(found->second);
  }

  std::map<std::string, std::string, std::less<>> strings;
};

}  // namespace lumiwren::testing
