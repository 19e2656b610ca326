#include "actions/CustomActionJSON.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <set>

namespace lumiwren {

namespace {

using Json = nlohmann::json;

constexpr auto idKey = "id";
constexpr auto nameKey = "name";
constexpr auto hotkeyKey = "hotkey";
constexpr auto keyCodeKey = "keyCode";
constexpr auto modifiersKey = "modifiers";
constexpr auto promptKey = "prompt";
constexpr auto inputTypeKey = "inputType";
constexpr auto isDefaultKey = "isDefault";

/// A value and the way to it, by which an error names its place.
class Place {
public:
  Place(const Json &value, std::string path) : value_(value), path_(std::move(path)) {}

  Place member(const char *key) const {
    if (!value_.is_object()) {
      fail("is not an object");
    }
    const auto found = value_.find(key);
    const auto path = path_ + "." + key;
    if (found == value_.end()) {
      throw CustomActionJSONError(path + " is missing");
    }
    return {*found, path};
  }

  std::string string() const {
    if (!value_.is_string()) {
      fail("is not a string");
    }
    return value_.get<std::string>();
  }

  bool boolean() const {
    if (!value_.is_boolean()) {
      fail("is not a boolean");
    }
    return value_.get<bool>();
  }

  template <typename Integer>
  Integer wholeNumber() const {
    std::optional<std::uint64_t> number;
    if (value_.is_number_unsigned()) {
      number = value_.get<std::uint64_t>();
    } else if (value_.is_number_integer()) {
      number = value_.get<std::int64_t>() == 0 ? std::optional<std::uint64_t>(0) : std::nullopt;  // "-0"
    } else if (value_.is_number_float()) {
      const auto real = value_.get<double>();
      constexpr double limit = 18446744073709551616.0;  // 2^64, the first value beyond
      if (real >= 0 && real < limit && std::floor(real) == real) {
        number = static_cast<std::uint64_t>(real);
      }
    }
    if (!number || *number > std::numeric_limits<Integer>::max()) {
      fail("is not a whole number from 0 to " + std::to_string(std::numeric_limits<Integer>::max()));
    }
    return static_cast<Integer>(*number);
  }

  [[noreturn]] void fail(const std::string &what) const { throw CustomActionJSONError(path_ + " " + what); }

private:
  const Json &value_;
  std::string path_;
};

CustomAction decodeAction(const Place &object) {
  const auto id = object.member(idKey);
  const auto uuid = UUID::parse(id.string());
  if (!uuid) {
    id.fail("is not a UUID");
  }
  const auto hotkey = object.member(hotkeyKey);
  const auto rawInputType = object.member(inputTypeKey);
  const auto inputType = CustomAction::inputTypeFromRawValue(rawInputType.string());
  if (!inputType) {
    rawInputType.fail("is not an input type");
  }
  return {.id = *uuid,
          .name = object.member(nameKey).string(),
          .hotkey = {.keyCode = hotkey.member(keyCodeKey).wholeNumber<std::uint16_t>(),
                     .modifiers = hotkey.member(modifiersKey).wholeNumber<std::uint64_t>()},
          .prompt = object.member(promptKey).string(),
          .inputType = *inputType,
          .isDefault = object.member(isDefaultKey).boolean()};
}

Json parse(std::string_view json) {
  // The keys of each object that is open, outermost first; by itself the library lets the last one count.
  std::vector<std::set<std::string>> keys;
  const auto keepsFirst = [&keys](int, Json::parse_event_t event, const Json &parsed) {
    switch (event) {
      case Json::parse_event_t::object_start:
        keys.emplace_back();
        return true;
      case Json::parse_event_t::object_end:
        keys.pop_back();
        return true;
      case Json::parse_event_t::key:
        return keys.back().insert(parsed.get<std::string>()).second;
      default:
        return true;
    }
  };
  try {
    return Json::parse(json, keepsFirst);
  } catch (const Json::parse_error &error) {
    throw CustomActionJSONError("not valid JSON at byte " + std::to_string(error.byte));
  } catch (const Json::exception &) {
    throw CustomActionJSONError("not valid JSON: a number is out of range");
  }
}

}  // namespace

std::string encodeCustomActions(const std::vector<CustomAction> &actions) {
  // Keeps the order of the keys, which a reader of the file is glad of.
  auto list = nlohmann::ordered_json::array();
  for (const auto &action : actions) {
    list.push_back(
        {{idKey, action.id.toString()},
         {nameKey, action.name},
         {hotkeyKey, {{keyCodeKey, action.hotkey.keyCode}, {modifiersKey, action.hotkey.modifiers}}},
         {promptKey, action.prompt},
         {inputTypeKey, CustomAction::rawValue(action.inputType)},
         {isDefaultKey, action.isDefault}});
  }
  try {
    return list.dump();
  } catch (const Json::exception &) {
    throw CustomActionJSONError("a text is not valid UTF-8");
  }
}

std::vector<CustomAction> decodeCustomActions(std::string_view json) {
  const auto list = parse(json);
  if (!list.is_array()) {
    throw CustomActionJSONError("not a list");
  }
  std::vector<CustomAction> actions;
  actions.reserve(list.size());
  for (std::size_t index = 0; index < list.size(); ++index) {
    actions.push_back(decodeAction({list[index], "actions[" + std::to_string(index) + "]"}));
  }
  return actions;
}

}  // namespace lumiwren
