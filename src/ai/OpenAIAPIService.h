#pragma once

#include "ai/KeychainManager.h"
#include "ai/OpenAIEndpoint.h"
#include "ai/OpenAIRequest.h"
#include "base/MainQueue.h"
#include "base/Secret.h"
#include "platform/HTTPClient.h"

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>

namespace lumiwren {

/// The client of the chat completions service. Stateless between calls; any number of calls at once.
class OpenAIAPIService {
public:
  using OnUpdate = std::function<void(const std::string &answerSoFar)>;

  OpenAIAPIService(HTTPClient &client, KeychainManager &keychain, MainQueue &mainQueue,
                   OpenAIEndpoint endpoint);

  const std::string &baseURL() const { return endpoint_.baseURL; }
  const std::string &model() const { return endpoint_.model; }
  static constexpr std::int64_t maxTokens = 500;

  /// Sends the request and reads the streamed answer to the end of the body. `onUpdate` runs on the main
  /// thread, awaited, with the whole answer so far: once for each chunk with content, and once more at the
  /// end. Throws LumiwrenError for a refusal by the server, TransportError below that, CancellationError when
  /// stopped; no update comes after a throw. Not on the main thread.
  void streamRequest(const OpenAIRequest &request, const Secret &apiKey, const OnUpdate &onUpdate,
                     const std::stop_token &token);
  /// Whether the server accepts the stored key. Throws as streamRequest() does, and LumiwrenError::noAPIKey
  /// without a key. Not on the main thread.
  bool testConnection(const std::stop_token &token);

private:
  HTTPRequest makeRequest(const OpenAIRequest &request, const Secret &apiKey) const;

  HTTPClient &client_;
  KeychainManager &keychain_;
  MainQueue &mainQueue_;
  const OpenAIEndpoint endpoint_;
};

}  // namespace lumiwren
