#pragma once

#include "platform/UserDefaults.h"
#include "platform/linux/WholeFile.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// User defaults as one JSON object in a file that a user may read, edit, and link to elsewhere. Booleans are
/// true and false; data is a string, or {"base64": "..."} when it is no valid UTF-8; lists of texts are
/// arrays of strings. What else the file holds is kept as it is.
///
/// The file is read at construction and looked at again before each change. A change is written to a new file
/// that then takes the old one's place, so that a crash leaves one or the other. A file that cannot be read,
/// or holds no JSON object, is set aside under a name ending in ".unreadable". What cannot be written stays
/// in memory, and is written together with the next change.
class JSONUserDefaults : public UserDefaults {
public:
  /// "lumiwren/defaults.json" in the user's configuration folder (XDG_CONFIG_HOME, else ~/.config).
  static std::filesystem::path defaultFile();

  explicit JSONUserDefaults(std::filesystem::path file);

  bool boolForKey(std::string_view key) override;
  std::optional<std::string> dataForKey(std::string_view key) override;
  std::vector<std::string> stringArrayForKey(std::string_view key) override;
  void setBool(std::string_view key, bool value) override;
  void setData(std::string_view key, std::string_view bytes) override;

private:
  // Keeps the order in which a user has arranged the keys.
  using JSON = nlohmann::ordered_json;

  const JSON *find(std::string_view key) const;
  void set(std::string_view key, JSON value);
  /// Takes over what the file holds now. False when it holds something that must not be overwritten.
  bool load();
  void save();
  bool setAside(const std::string &reason) const;

  const std::filesystem::path file_;
  JSON values_ = JSON::object();
  JSON unsaved_ = JSON::object();       // the changes that the file does not hold
  std::optional<FileVersion> version_;  // of the file's known content; empty while there is no file
};

}  // namespace lumiwren
