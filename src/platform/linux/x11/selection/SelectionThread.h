#pragma once

#include "platform/Pasteboard.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace lumiwren {

enum class Selection { Clipboard, Primary };

/// The X connection that watches the clipboard and reads selections, on a thread of its own that waits for
/// nobody but the X server, and sleeps while nothing happens. Any thread may call; calls return what there is
/// when a limit passes. Without an X server there is nothing to read and nothing changes.
class SelectionThread {
public:
  using Clock = std::chrono::steady_clock;

  /// A target's value: `encoding` is the name of the property's type.
  struct Value {
    std::string encoding;
    std::uint8_t unit = 1;
    Bytes bytes;
  };
  struct Reading {
    std::vector<std::optional<Value>> values = {};  // one for each target; empty for what did not come
    /// Somebody else took the selection meanwhile (noticed for the clipboard only): not all of this is from
    /// one owner. An owner that dies just gives nothing more.
    bool ownerChanged = false;
  };

  /// Connects in the background.
  SelectionThread();
  SelectionThread(const SelectionThread &) = delete;
  SelectionThread &operator=(const SelectionThread &) = delete;
  ~SelectionThread();

  /// Asks the owner for all targets at once. Ends when the last one has come or was refused, and at
  /// `deadline`. Throws CancellationError as soon as `token` is stopped.
  Reading read(Selection selection, std::vector<std::string> targets, Clock::time_point deadline,
               const std::stop_token &token);
  /// The names of a list of atoms, as a property holds it.
  std::vector<std::string> atomNames(Bytes atoms);
  /// The clipboard's new owners so far, as of now.
  std::int64_t changeCount();
  /// Leaves the clipboard without an owner.
  void clearClipboard();
  bool hasOwner(Selection selection);
  /// Whether the owner belongs to the program that made `window`.
  bool isOwnedByClientOf(std::uint32_t window, Selection selection);

private:
  class Core;
  struct State;
  using Command = std::function<void(Core *)>;

  static void run(const std::shared_ptr<State> &state);
  void post(Command command);
  template <typename T>
  T call(std::function<T(Core &)> question, T otherwise);

  // The thread shares it, and may outlive this object when the X server has stopped answering.
  std::shared_ptr<State> state_;
  std::thread thread_;
};

}  // namespace lumiwren
