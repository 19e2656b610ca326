#pragma once

#include "platform/Bundle.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace lumiwren {

/// A property list that is one JSON object in a file. One that is not there, or is something else, has no
/// entries.
class JSONBundle : public Bundle {
public:
  explicit JSONBundle(const std::filesystem::path &file);

  /// Where the property list of a program in this folder is: beside an installed program's other data
  /// (../share/lumiwren), else, as in a build, beside the program.
  static std::filesystem::path fileFor(const std::filesystem::path &programFolder);

  std::optional<std::string> stringForKey(std::string_view key) const override;

private:
  std::map<std::string, std::string, std::less<>> strings_;
};

}  // namespace lumiwren
