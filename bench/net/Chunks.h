#pragma once

#include <string>
#include <string_view>

namespace lumiwren::bench {

/// The JSON text of one streamed chunk, as the service writes it.
inline std::string chunkJSON(std::string_view content) {
  return R"({"id":"chatcmpl-AbCdEfGhIjKlMnOpQrStUvWxYz012","object":"chat.completion.chunk","created":1732170000,)"
         R"("model":"gpt-4o-mini-2024-07-18","service_tier":"default","system_fingerprint":"fp_0123456789",)"
         R"("choices":[{"index":0,"delta":{"content":")" +
         std::string(content) + R"("},"logprobs":null,"finish_reason":null}],"usage":null})";
}

inline std::string chunkEvent(std::string_view content) {
  return "data: " + chunkJSON(content) + "\n\n";
}

}  // namespace lumiwren::bench
