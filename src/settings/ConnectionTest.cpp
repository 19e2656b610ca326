#include "settings/ConnectionTest.h"

#include "base/Task.h"

#include <exception>
#include <optional>
#include <utility>

namespace lumiwren {
namespace {

TestResult failure(std::string message) {
  return {.outcome = TestResult::Case::Failure, .message = std::move(message)};
}

/// The outcome; empty when the program ends first. `failed` tells that the test ended with an error.
std::optional<TestResult> outcomeOf(OpenAIAPIService &service, const std::stop_token &token, bool &failed) {
  failed = true;
  try {
    const bool accepted = service.testConnection(token);
    failed = false;
    return accepted ? TestResult{.outcome = TestResult::Case::Success, .message = {}}
                    : failure("Connection failed");
  } catch (const CancellationError &) {
    return std::nullopt;
  } catch (const std::exception &error) {
    return failure(error.what());
  }
}

}  // namespace

void testConnection(const KeyFormServices &services, const Secret &key, AfterError afterError,
                    std::function<void(const TestResult &)> then) {
  Task::start([services, key, afterError, then = std::move(then),
               turn = services.keychain.takeTurn()](const std::stop_token &token) {
    const bool restores = afterError == AfterError::RestorePreviousKey;
    std::optional<Secret> previous;
    services.keychain.inTurn(turn, [&](KeychainManager &keychain) {
      if (restores) {
        previous = keychain.getAPIKey();
      }
      return KeychainQueue::Outcome{keychain.saveAPIKey(key) ? std::optional(true) : std::nullopt};
    });
    bool failed = false;
    if (const auto result = outcomeOf(services.service, token, failed)) {
      services.mainQueue.post([then, result] { then(*result); });
    }
    if (failed && restores) {
      services.keychain.inTurn(services.keychain.takeTurn(), [&](KeychainManager &keychain) {
        const bool done = previous ? keychain.saveAPIKey(*previous) : keychain.deleteAPIKey();
        return KeychainQueue::Outcome{done ? std::optional(previous.has_value()) : std::nullopt};
      });
    }
  }).detach();
}

}  // namespace lumiwren
