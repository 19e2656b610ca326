#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// The program's own settings, by key. Main thread. A change is in permanent storage, whole, when the call
/// returns; a failure to store is printed as one line, leaves what was stored, and the change lasts for this
/// run.
class UserDefaults {
public:
  virtual ~UserDefaults() = default;

  /// False when there is no such value.
  virtual bool boolForKey(std::string_view key) = 0;
  /// Bytes as they were set; empty when there is no such value.
  virtual std::optional<std::string> dataForKey(std::string_view key) = 0;
  /// The texts that a user has listed under the key; none when there is no such value.
  virtual std::vector<std::string> stringArrayForKey(std::string_view key) = 0;
  virtual void setBool(std::string_view key, bool value) = 0;
  virtual void setData(std::string_view key, std::string_view bytes) = 0;
};

}  // namespace lumiwren
