#include "platform/linux/JSONBundle.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <system_error>

namespace lumiwren {

JSONBundle::JSONBundle(const std::filesystem::path &file) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(file, ignored)) {
    return;
  }
  std::ifstream stream(file);
  const auto list = nlohmann::json::parse(stream, nullptr, /*allow_exceptions=*/false);
  if (!list.is_object()) {
    return;
  }
  for (const auto &[key, value] : list.items()) {
    if (value.is_string()) {
      strings_.emplace(key, value.get<std::string>());
    }
  }
}

std::filesystem::path JSONBundle::fileFor(const std::filesystem::path &programFolder) {
  const auto installed = programFolder / ".." / "share" / "lumiwren" / "Info.json";
  std::error_code ignored;
  return std::filesystem::exists(installed, ignored) ? installed : programFolder / "Info.json";
}

std::optional<std::string> JSONBundle::stringForKey(std::string_view key) const {
  const auto found = strings_.find(key);
  return found == strings_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace lumiwren
