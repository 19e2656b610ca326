#pragma once

#include <filesystem>

namespace lumiwren {

/// Where the user's configuration is: XDG_CONFIG_HOME, else ~/.config.
std::filesystem::path configurationFolder();
/// For what can be had again: XDG_CACHE_HOME, else ~/.cache.
std::filesystem::path cacheFolder();

}  // namespace lumiwren
