#include "ai/OpenAIAPIService.h"

#include "ai/LineSplitter.h"
#include "ai/LumiwrenError.h"
#include "ai/OpenAIStreamResponse.h"

#include <string_view>
#include <utility>
#include <vector>

namespace lumiwren {

namespace {

/// How many updates may keep the main thread from everything else.
constexpr std::size_t updatesAtOnce = 32;

/// The text that one line of the event stream adds to the answer; empty when it adds none.
std::optional<std::string> contentOf(std::string_view line) {
  constexpr std::string_view prefix = "data: ";
  // The sentinel ends nothing: only the end of the body does.
  if (!line.starts_with(prefix) || line == "data: [DONE]") {
    return std::nullopt;
  }
  auto chunk = OpenAIStreamResponse::decode(line.substr(prefix.size()));
  if (!chunk || !chunk->choices || chunk->choices->empty()) {
    return std::nullopt;
  }
  auto &delta = chunk->choices->front().delta;
  return delta ? std::move(delta->content) : std::nullopt;
}

}  // namespace

OpenAIAPIService::OpenAIAPIService(HTTPClient &client, KeychainManager &keychain, MainQueue &mainQueue,
                                   OpenAIEndpoint endpoint)
    : client_(client), keychain_(keychain), mainQueue_(mainQueue), endpoint_(std::move(endpoint)) {}

HTTPRequest OpenAIAPIService::makeRequest(const OpenAIRequest &request, const Secret &apiKey) const {
  constexpr std::string_view scheme = "Bearer ";
  std::string authorization;
  authorization.reserve(scheme.size() + apiKey.reveal().size());  // No copy of the key stays behind.
  authorization.append(scheme).append(apiKey.reveal());
  HTTPRequest http;
  http.method = "POST";
  http.url = endpoint_.baseURL;
  http.headers.reserve(2);
  http.headers.push_back({"Authorization", Secret(std::move(authorization))});
  http.headers.push_back({"Content-Type", Secret::copyOf("application/json")});
  http.body = request.encode();
  return http;
}

void OpenAIAPIService::streamRequest(const OpenAIRequest &request, const Secret &apiKey,
                                     const OnUpdate &onUpdate, const std::stop_token &token) {
  const auto response = client_.send(makeRequest(request, apiKey), token);
  if (response->status() == 0) {
    throw LumiwrenError::invalidResponse();
  }
  if (response->status() != 200) {
    throw LumiwrenError::apiError("HTTP " + std::to_string(response->status()));
  }
  std::string answer;
  // Chunks that arrived together go to the main thread together, each as an update of its own: in a burst the
  // change of threads would cost more than all the rest.
  std::vector<std::string> contents;
  const auto update = [&] {
    if (!contents.empty()) {
      mainQueue_.runAndWait(token, [&] {
        for (const auto &content : contents) {
          if (token.stop_requested()) {
            return;
          }
          onUpdate(answer += content);
        }
      });
      contents.clear();
    }
  };
  const auto readLine = [&](std::string_view line) {
    if (auto content = contentOf(line)) {
      contents.push_back(std::move(*content));
      if (contents.size() == updatesAtOnce) {
        update();
      }
    }
  };
  LineSplitter lines;
  for (auto bytes = response->read(token); !bytes.empty(); bytes = response->read(token)) {
    lines.feed(bytes, readLine);
    update();
  }
  lines.finish(readLine);
  update();
  mainQueue_.runAndWait(token, [&] { onUpdate(answer); });
}

bool OpenAIAPIService::testConnection(const std::stop_token &token) {
  const auto key = keychain_.getAPIKey();
  if (!key) {
    throw LumiwrenError::noAPIKey();
  }
  const OpenAIRequest request{
      .model = endpoint_.model, .messages = {{"user", "Hi"}}, .maxTokens = 10, .stream = false};
  const auto response = client_.send(makeRequest(request, *key), token);
  if (response->status() == 0) {
    throw LumiwrenError::invalidResponse();
  }
  while (!response->read(token).empty()) {
    // The answer is of no use, but one that breaks off is a failed test; and the connection can be kept.
  }
  return response->status() == 200;
}

}  // namespace lumiwren
