#pragma once

#include <filesystem>

namespace lumiwren {

/// Where the user's configuration is: XDG_CONFIG_HOME, else ~/.config.
std::filesystem::path configurationFolder();

}  // namespace lumiwren
