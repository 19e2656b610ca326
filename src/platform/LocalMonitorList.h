#pragma once

#include "base/Handle.h"
#include "platform/EventMonitors.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace lumiwren {

/// The local monitors in the order in which they were added. One thread. Monitors may come and go while they
/// are being asked.
class LocalMonitorList {
public:
  Handle add(std::uint32_t mask, EventMonitors::LocalHandler handler) {
    auto entry = std::make_shared<Entry>(Entry{mask, std::move(handler)});
    entries_->push_back(entry);
    return Handle([weakEntries = std::weak_ptr(entries_), weakEntry = std::weak_ptr(entry)] {
      const auto entries = weakEntries.lock();
      const auto ended = weakEntry.lock();
      if (entries && ended) {
        std::erase(*entries, ended);
      }
    });
  }

  /// Asks the newest monitor first, and no older one once the event is consumed.
  LocalEventResult ask(const InputEvent &event) const {
    // A handler may end what owns this list.
    const auto entries = entries_;
    const auto asked = *entries;
    for (auto entry = asked.rbegin(); entry != asked.rend(); ++entry) {
      const bool stillThere = std::find(entries->begin(), entries->end(), *entry) != entries->end();
      if (stillThere && ((*entry)->mask & eventMask::of(event.kind)) != 0 &&
          (*entry)->handler(event) == LocalEventResult::Consume) {
        return LocalEventResult::Consume;
      }
    }
    return LocalEventResult::Pass;
  }

  std::size_t size() const { return entries_->size(); }

private:
  struct Entry {
    std::uint32_t mask;
    EventMonitors::LocalHandler handler;
  };

  std::shared_ptr<std::vector<std::shared_ptr<Entry>>> entries_ =
      std::make_shared<std::vector<std::shared_ptr<Entry>>>();
};

}  // namespace lumiwren
