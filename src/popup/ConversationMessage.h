#pragma once

#include "base/UUID.h"

#include <string>

namespace lumiwren {

/// One turn of the popup's conversation.
struct ConversationMessage {
  UUID id = UUID::random();
  std::string role;     // "user" or "assistant"
  std::string content;  // of an assistant turn: the Markdown answer as received so far

  bool isUser() const { return role == "user"; }
};

}  // namespace lumiwren
