#pragma once

#include "platform/SecretStore.h"

#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// A secret store in memory, which a test can make fail or keep its callers waiting. Any thread.
class FakeSecretStore : public SecretStore {
public:
  enum class Operation { CopyMatching, Contains, Add, Remove };

  std::optional<Secret> copyMatching(std::string_view service, std::string_view account) override {
    std::unique_lock lock(mutex_);
    enter(lock, Operation::CopyMatching);
    const auto item = items_.find(key(service, account));
    return readsFail_ || item == items_.end() ? std::nullopt : std::optional(item->second);
  }

  bool contains(std::string_view service, std::string_view account) override {
    std::unique_lock lock(mutex_);
    enter(lock, Operation::Contains);
    return !readsFail_ && items_.find(key(service, account)) != items_.end();
  }

  SecretStatus add(std::string_view service, std::string_view account, const Secret &secret) override {
    std::unique_lock lock(mutex_);
    enter(lock, Operation::Add);
    if (addsFail_) {
      return SecretStatus::Failure;
    }
    items_.insert_or_assign(key(service, account), secret);
    return SecretStatus::Success;
  }

  SecretStatus remove(std::string_view service, std::string_view account) override {
    std::unique_lock lock(mutex_);
    enter(lock, Operation::Remove);
    if (removesFail_) {
      return SecretStatus::Failure;
    }
    return items_.erase(key(service, account)) > 0 ? SecretStatus::Success : SecretStatus::ItemNotFound;
  }

  /// What the named operations answer from now on: as a store that refuses, or as one that works.
  void setReadsFail(bool fail) { set(readsFail_, fail); }
  void setAddsFail(bool fail) { set(addsFail_, fail); }
  void setRemovesFail(bool fail) { set(removesFail_, fail); }

  /// From now on every operation waits, like a store that does not answer, until setSilent(false). A test
  /// ends the silence before it drops the store.
  void setSilent(bool silent) { set(silent_, silent); }
  /// Returns when `count` operations are waiting in a silent store.
  void waitForCallers(std::size_t count = 1) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return waiting_ >= count; });
  }

  /// Every operation that was begun, in order.
  std::vector<Operation> operations() const {
    const std::lock_guard lock(mutex_);
    return operations_;
  }
  std::size_t count(Operation operation) const {
    const std::lock_guard lock(mutex_);
    std::size_t found = 0;
    for (const auto begun : operations_) {
      found += begun == operation ? 1 : 0;
    }
    return found;
  }
  std::size_t itemCount() const {
    const std::lock_guard lock(mutex_);
    return items_.size();
  }

private:
  using Key = std::pair<std::string, std::string>;

  static Key key(std::string_view service, std::string_view account) {
    return {std::string(service), std::string(account)};
  }

  void enter(std::unique_lock<std::mutex> &lock, Operation operation) {
    operations_.push_back(operation);
    ++waiting_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !silent_; });
    --waiting_;
  }

  void set(bool &switched, bool value) {
    const std::lock_guard lock(mutex_);
    switched = value;
    changed_.notify_all();
  }

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::map<Key, Secret> items_;
  std::vector<Operation> operations_;
  std::size_t waiting_ = 0;
  bool readsFail_ = false;
  bool addsFail_ = false;
  bool removesFail_ = false;
  bool silent_ = false;
};

}  // namespace lumiwren::testing
