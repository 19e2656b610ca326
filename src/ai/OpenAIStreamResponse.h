#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// One chunk of a streamed answer. A missing key and a null leave a field absent.
struct OpenAIStreamResponse {
  struct Delta {
    std::optional<std::string> role;
    std::optional<std::string> content;
  };
  struct StreamChoice {
    std::optional<std::int64_t> index;
    std::optional<Delta> delta;
    std::optional<std::string> finishReason;
  };

  std::optional<std::string> id;
  std::optional<std::string> object;
  std::optional<std::int64_t> created;
  std::optional<std::string> model;
  std::optional<std::vector<StreamChoice>> choices;

  /// Empty when `json` is no JSON object, or when any known key in it holds a value of the wrong type.
  static std::optional<OpenAIStreamResponse> decode(std::string_view json);
};

}  // namespace lumiwren
