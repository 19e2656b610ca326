#pragma once

#include "base/Handle.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace lumiwren {

/// Observers of something that changes. One thread. Observers may come and go while they are being told, and
/// so may the signal.
template <typename... Args>
class Signal {
public:
  using Observer = std::function<void(Args...)>;

  /// The observer is told of every change for as long as the handle is held.
  Handle observe(Observer observer) {
    auto entry = std::make_shared<Observer>(std::move(observer));
    entries_->push_back(entry);
    return Handle([weakEntries = std::weak_ptr(entries_), weakEntry = std::weak_ptr(entry)] {
      const auto entries = weakEntries.lock();
      const auto ended = weakEntry.lock();
      if (entries && ended) {
        std::erase(*entries, ended);
      }
    });
  }

  void notify(Args... args) const {
    const auto current = entries_;
    const auto entries = *current;
    for (const auto &entry : entries) {
      if (std::find(current->begin(), current->end(), entry) != current->end()) {
        (*entry)(args...);
      }
    }
  }

private:
  std::shared_ptr<std::vector<std::shared_ptr<Observer>>> entries_ =
      std::make_shared<std::vector<std::shared_ptr<Observer>>>();
};

}  // namespace lumiwren
