#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lumiwren {

/// The body of a chat completion request.
struct OpenAIRequest {
  struct Message {
    std::string role;  // "system", "user" or "assistant"
    std::string content;
    friend bool operator==(const Message &, const Message &) = default;
  };

  std::string model;
  std::vector<Message> messages;  // oldest first
  std::int64_t maxTokens = 0;
  bool stream = false;

  /// The JSON form. Bytes in a text that are no valid UTF-8 become U+FFFD.
  std::string encode() const;
};

}  // namespace lumiwren
