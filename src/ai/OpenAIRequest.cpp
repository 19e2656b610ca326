#include "ai/OpenAIRequest.h"

#include <nlohmann/json.hpp>

namespace lumiwren {

std::string OpenAIRequest::encode() const {
  using nlohmann::ordered_json;
  auto list = ordered_json::array();
  for (const auto &message : messages) {
    list.push_back(ordered_json{{"role", message.role}, {"content", message.content}});
  }
  const ordered_json body{
      {"model", model}, {"messages", std::move(list)}, {"max_tokens", maxTokens}, {"stream", stream}};
  return body.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace lumiwren
