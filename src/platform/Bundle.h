#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace lumiwren {

/// What the program's package says about it, its property list. Any thread; nothing changes while the program
/// runs.
class Bundle {
public:
  virtual ~Bundle() = default;

  /// The entry's value; empty when there is no such entry, or it is no string.
  virtual std::optional<std::string> stringForKey(std::string_view key) const = 0;
};

}  // namespace lumiwren
