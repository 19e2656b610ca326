#include "ai/KeychainQueue.h"

#include "base/Task.h"

#include <utility>

namespace lumiwren {

KeychainQueue::KeychainQueue(KeychainManager &keychain, MainQueue &mainQueue)
    : keychain_(keychain), mainQueue_(mainQueue) {}

void KeychainQueue::getAPIKey(std::function<void(const std::optional<Secret> &)> then) {
  run([then = std::move(then)](KeychainManager &keychain) {
    auto key = keychain.getAPIKey();
    const bool holdsKey = key.has_value();
    return Outcome{holdsKey, [then, key = std::move(key)] { then(key); }};
  });
}

void KeychainQueue::saveAPIKey(const Secret &key, std::function<void(bool)> then) {
  run([key, then = std::move(then)](KeychainManager &keychain) {
    const bool saved = keychain.saveAPIKey(key);
    // A refusal leaves nothing, or all as it was, depending on what was refused.
    return Outcome{saved ? std::optional(true) : std::nullopt, [then, saved] { then(saved); }};
  });
}

void KeychainQueue::deleteAPIKey(std::function<void()> then) {
  run([then = std::move(then)](KeychainManager &keychain) {
    return Outcome{keychain.deleteAPIKey() ? std::optional(false) : std::nullopt, then};
  });
}

void KeychainQueue::run(Operation operation) {
  Task::start([this, turn = takeTurn(), operation = std::move(operation)](const std::stop_token &) {
    inTurn(turn, operation);
  }).detach();
}

KeychainQueue::Turn KeychainQueue::takeTurn() {
  const std::lock_guard lock(mutex_);
  return nextTurn_++;
}

void KeychainQueue::inTurn(Turn turn, const Operation &operation) {
  {
    std::unique_lock lock(mutex_);
    turnChanged_.wait(lock, [&] { return currentTurn_ == turn; });
  }
  mainQueue_.post([this, outcome = operation(keychain_)] {
    if (outcome.holdsKey && std::exchange(holdsKey_, *outcome.holdsKey) != *outcome.holdsKey) {
      changed_.notify();
    }
    if (outcome.then) {
      outcome.then();
    }
  });
  {
    const std::lock_guard lock(mutex_);
    ++currentTurn_;
  }
  turnChanged_.notify_all();
}

}  // namespace lumiwren
