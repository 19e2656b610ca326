#pragma once

#include <string>
#include <string_view>

namespace lumiwren {

/// Which server is asked, and for which model. Read once, at start.
struct OpenAIEndpoint {
  std::string baseURL = "https://api.openai.com/v1/chat/completions";
  std::string model = "gpt-4o-mini";

  /// With OPENAI_BASE_URL (scheme, host and prefix up to "/v1") and OPENAI_MODEL in place of the defaults,
  /// where they are set and not empty. Throws std::invalid_argument, with a text for the user, for a URL that
  /// is neither https nor plain http to a loopback address.
  static OpenAIEndpoint fromEnvironment();
};

}  // namespace lumiwren
