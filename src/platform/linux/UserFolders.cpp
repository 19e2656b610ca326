#include "platform/linux/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <vector>

namespace lumiwren {
namespace {

std::optional<std::filesystem::path> absolutePathFromEnvironment(const char *name) {
  const char *value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read at start-up
  if (value == nullptr || !std::filesystem::path(value).is_absolute()) {
    return std::nullopt;
  }
  return value;
}

std::filesystem::path homeFolder() {
  if (const auto home = absolutePathFromEnvironment("HOME")) {
    return *home;
  }
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd *found = nullptr;
  ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
  return found != nullptr ? found->pw_dir : "/nonexistent";
}

}  // namespace

std::filesystem::path configurationFolder() {
  const auto configured = absolutePathFromEnvironment("XDG_CONFIG_HOME");
  return configured ? *configured : homeFolder() / ".config";
}

std::filesystem::path cacheFolder() {
  const auto configured = absolutePathFromEnvironment("XDG_CACHE_HOME");
  return configured ? *configured : homeFolder() / ".cache";
}

}  // namespace lumiwren
