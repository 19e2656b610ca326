#pragma once

#include "base/Handle.h"
#include "platform/EventMonitors.h"
#include "platform/GlobalMonitorList.h"
#include "platform/LocalMonitorList.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

namespace lumiwren::testing {

/// Monitors whose events the test makes up. A press goes to one of the two sides, as on a desktop.
class FakeEventMonitors : public EventMonitors {
public:
  /// False: a session that does not let anybody watch.
  bool permitsGlobalMonitors = true;
  std::uint32_t time = 0;  // now

  Handle addGlobalMonitor(std::uint32_t mask, GlobalHandler handler) override {
    if (!permitsGlobalMonitors) {
      return {};
    }
    auto installed = std::make_shared<Handle>(globals_.add(mask, std::move(handler)));
    ++*globalCount_;
    return Handle([installed, count = globalCount_] {
      installed->reset();
      --*count;
    });
  }
  Handle addLocalMonitor(std::uint32_t mask, LocalHandler handler) override {
    return locals_.add(mask, std::move(handler));
  }
  std::uint32_t currentTime() override { return time; }

  /// A press in another application.
  void pressElsewhere(const InputEvent &event) const { globals_.tell(event); }
  void pressKeyElsewhere(std::uint16_t keyCode, std::uint64_t modifierFlags = 0) const {
    pressElsewhere({EventKind::KeyDown, keyCode, modifierFlags});
  }
  /// A press in one of the program's own windows; what is not consumed would reach the window.
  LocalEventResult pressHere(const InputEvent &event) const { return locals_.ask(event); }
  LocalEventResult pressKeyHere(std::uint16_t keyCode, std::uint64_t modifierFlags = 0) const {
    return pressHere({EventKind::KeyDown, keyCode, modifierFlags});
  }

  std::size_t globalMonitorCount() const { return *globalCount_; }
  std::size_t localMonitorCount() const { return locals_.size(); }

private:
  GlobalMonitorList globals_;
  LocalMonitorList locals_;
  std::shared_ptr<std::size_t> globalCount_ = std::make_shared<std::size_t>(0);
};

}  // namespace lumiwren::testing
