#include "platform/linux/JSONUserDefaults.h"

#include "base/Base64.h"
#include "base/PrintLine.h"
#include "base/Unicode.h"
#include "platform/linux/UserFolders.h"

#include <stdexcept>
#include <system_error>
#include <utility>

namespace lumiwren {

namespace {

constexpr auto base64Key = "base64";

/// Throws std::runtime_error when the text is no JSON object, or one whose nesting would exhaust the stack.
nlohmann::ordered_json parseObject(std::string_view text) {
  using JSON = nlohmann::ordered_json;
  constexpr int deepest = 100;
  const auto isNotTooDeep = [](int depth, JSON::parse_event_t, const JSON &) {
    return depth <= deepest ? true : throw std::runtime_error("nested too deeply");
  };
  JSON values;
  try {
    values = JSON::parse(text, isNotTooDeep);
  } catch (const JSON::parse_error &error) {
    throw std::runtime_error("not valid JSON at byte " + std::to_string(error.byte));
  } catch (const JSON::exception &) {
    throw std::runtime_error("not valid JSON: a number is out of range");
  }
  return values.is_object() ? values : throw std::runtime_error("not a JSON object");
}

}  // namespace

std::filesystem::path JSONUserDefaults::defaultFile() {
  return configurationFolder() / "lumiwren" / "defaults.json";
}

JSONUserDefaults::JSONUserDefaults(std::filesystem::path file) : file_(std::move(file)) {
  removeLeftovers(linkTarget(file_));
  load();
}

bool JSONUserDefaults::boolForKey(std::string_view key) {
  const auto *value = find(key);
  return value != nullptr && value->is_boolean() && value->get<bool>();
}

std::optional<std::string> JSONUserDefaults::dataForKey(std::string_view key) {
  const auto *value = find(key);
  if (value == nullptr) {
    return std::nullopt;
  }
  if (value->is_string()) {
    return value->get<std::string>();
  }
  if (value->is_object() && value->size() == 1 && value->contains(base64Key) &&
      value->at(base64Key).is_string()) {
    return decodeBase64(value->at(base64Key).get<std::string>());
  }
  return std::nullopt;
}

std::vector<std::string> JSONUserDefaults::stringArrayForKey(std::string_view key) {
  std::vector<std::string> texts;
  if (const auto *value = find(key); value != nullptr && value->is_array()) {
    for (const auto &element : *value) {
      if (element.is_string()) {
        texts.push_back(element.get<std::string>());
      }
    }
  }
  return texts;
}

void JSONUserDefaults::setBool(std::string_view key, bool value) {
  set(key, value);
}

void JSONUserDefaults::setData(std::string_view key, std::string_view bytes) {
  set(key, unicode::isValidUTF8(bytes) ? JSON(bytes) : JSON::object({{base64Key, encodeBase64(bytes)}}));
}

const JSONUserDefaults::JSON *JSONUserDefaults::find(std::string_view key) const {
  const auto value = values_.find(std::string(key));
  return value != values_.end() ? &*value : nullptr;
}

void JSONUserDefaults::set(std::string_view key, JSON value) {
  const bool mayBeReplaced = load();
  const auto *stored = find(key);
  if (version_ && unsaved_.empty() && stored != nullptr && *stored == value) {
    return;
  }
  unsaved_[std::string(key)] = value;
  values_[std::string(key)] = std::move(value);
  if (mayBeReplaced) {
    save();
  }
}

bool JSONUserDefaults::load() {
  try {
    auto whole = readWhole(file_, version_);
    if (whole.version != version_) {
      values_ = parseObject(whole.content);
      values_.update(unsaved_);
      version_ = whole.version;
    }
    return true;
  } catch (const std::system_error &error) {
    version_.reset();
    const bool isAbsent =
        error.code() == std::errc::no_such_file_or_directory || error.code() == std::errc::not_a_directory;
    return isAbsent || setAside(error.code().message());
  } catch (const std::runtime_error &error) {
    version_.reset();
    return setAside(error.what());
  }
}

void JSONUserDefaults::save() {
  try {
    makeFolder(file_.parent_path());
    version_ = writeWhole(linkTarget(file_), values_.dump(2) + "\n");
    unsaved_.clear();
  } catch (const std::system_error &error) {
    printLine("Failed to save the settings in " + file_.string() + ": " + error.code().message());
  }
}

bool JSONUserDefaults::setAside(const std::string &reason) const {
  const auto unreadable = linkTarget(file_);
  auto aside = unreadable;
  aside += ".unreadable";
  std::error_code failure;
  for (int number = 2; std::filesystem::exists(std::filesystem::symlink_status(aside, failure)); ++number) {
    aside = unreadable;
    aside += ".unreadable" + std::to_string(number);
  }
  std::filesystem::rename(unreadable, aside, failure);
  printLine("Failed to load the settings in " + file_.string() + ": " + reason +
            (failure ? "; they will not be saved: " + failure.message() : "; kept as " + aside.string()));
  return !failure;
}

}  // namespace lumiwren
