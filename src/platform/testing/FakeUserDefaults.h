#pragma once

#include "platform/UserDefaults.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace lumiwren::testing {

/// User defaults in memory, which count what is written.
class FakeUserDefaults : public UserDefaults {
public:
  bool boolForKey(std::string_view key) override {
    const auto *value = find<bool>(key);
    return value != nullptr && *value;
  }
  std::optional<std::string> dataForKey(std::string_view key) override {
    const auto *value = find<std::string>(key);
    return value != nullptr ? std::optional(*value) : std::nullopt;
  }
  std::vector<std::string> stringArrayForKey(std::string_view key) override {
    const auto *value = find<std::vector<std::string>>(key);
    return value != nullptr ? *value : std::vector<std::string>();
  }
  void setBool(std::string_view key, bool value) override { write(key, value); }
  void setData(std::string_view key, std::string_view bytes) override { write(key, std::string(bytes)); }

  /// What a user writes into the file; not counted.
  void setStringArray(std::string_view key, std::vector<std::string> texts) {
    values_.insert_or_assign(std::string(key), std::move(texts));
  }
  bool contains(std::string_view key) const { return values_.find(key) != values_.end(); }
  /// How often the key has been written, also with the value it had.
  std::size_t writeCount(std::string_view key) const {
    return static_cast<std::size_t>(std::count(writes_.begin(), writes_.end(), key));
  }
  /// The keys in the order in which they were written, one entry a write.
  const std::vector<std::string> &writes() const { return writes_; }

private:
  using Value = std::variant<bool, std::string, std::vector<std::string>>;

  template <typename T>
  const T *find(std::string_view key) const {
    const auto value = values_.find(key);
    return value != values_.end() ? std::get_if<T>(&value->second) : nullptr;
  }

  void write(std::string_view key, Value value) {
    values_.insert_or_assign(std::string(key), std::move(value));
    writes_.emplace_back(key);
  }

  std::map<std::string, Value, std::less<>> values_;
  std::vector<std::string> writes_;
};

}  // namespace lumiwren::testing
