#pragma once

#include <string>

#include "platform/HTTPClient.h"

namespace lumiwren::testing {

inline HTTPRequest post(const std::string &url, std::string body = "{}") {
  HTTPRequest request;
  request.method = "POST";
  request.url = url;
  request.headers.push_back({"Authorization", Secret::copyOf("Bearer sk-test")});
  request.headers.push_back({"Content-Type", Secret::copyOf("application/json")});
  request.body = std::move(body);
  return request;
}

inline std::string readAll(HTTPResponse &response, const std::stop_token &token = {}) {
  std::string body;
  for (auto bytes = response.read(token); !bytes.empty(); bytes = response.read(token)) {
    body += bytes;
  }
  return body;
}

/// The description of the TransportError that `action` ends with; empty when it does not.
template <typename Action>
std::string transportError(Action action) {
  try {
    action();
  } catch (const TransportError &error) {
    return error.what();
  }
  return {};
}

/// For asserting that something ends "at once" on a machine that is busy with other things: far below the
/// minute for which the network may be silent.
inline constexpr std::chrono::seconds atOnce{10};

}  // namespace lumiwren::testing
