#pragma once

#include "ai/KeychainManager.h"
#include "base/Handle.h"
#include "base/MainQueue.h"
#include "base/Secret.h"
#include "base/Signal.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

namespace lumiwren {

/// The API key for whoever may not wait for the secret store: every operation runs on a thread of its own,
/// after all that were asked for before it. What has been asked for happens, also when nobody is interested
/// in its result any more. Main thread, unless stated; lives longer than every task.
class KeychainQueue {
public:
  using Turn = std::uint64_t;
  struct Outcome {
    std::optional<bool> holdsKey;  // whether the store holds a key now; empty when that cannot be told
    MainQueue::Block then{};       // for the main thread, in the order of the operations
  };
  using Operation = std::function<Outcome(KeychainManager &keychain)>;

  KeychainQueue(KeychainManager &keychain, MainQueue &mainQueue);

  /// As KeychainManager has them. `then` is called with the result.
  void getAPIKey(std::function<void(const std::optional<Secret> &key)> then);
  void saveAPIKey(const Secret &key, std::function<void(bool saved)> then);
  void deleteAPIKey(std::function<void()> then);

  /// Whether the store held a key at the latest operation that could tell.
  bool holdsKey() const { return holdsKey_; }
  /// The observer is called after each change of holdsKey(), for as long as the handle is held.
  Handle observe(std::function<void()> observer) { return changed_.observe(std::move(observer)); }

  /// For sequences of operations: a place behind all operations so far, which has to be used. Any thread.
  Turn takeTurn();
  /// Waits for the turn and operates. On a task's thread.
  void inTurn(Turn turn, const Operation &operation);

private:
  void run(Operation operation);

  KeychainManager &keychain_;
  MainQueue &mainQueue_;
  std::mutex mutex_;
  std::condition_variable turnChanged_;
  Turn nextTurn_ = 0;
  Turn currentTurn_ = 0;
  bool holdsKey_ = false;
  Signal<> changed_;
};

}  // namespace lumiwren
