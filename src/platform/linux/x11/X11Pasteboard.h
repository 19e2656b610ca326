#pragma once

#include "platform/Pasteboard.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace lumiwren {

class PasteboardHolderClient;
class SelectionThread;
enum class Selection;

/// The CLIPBOARD selection. It is watched and read on a thread of its own, which no other program can block;
/// what is put there is owned by a holder process, so that it outlives this one however it ends. The change
/// count advances with every notification of a new owner, our own included: what setContents() has put there
/// is counted when it returns.
class X11Pasteboard : public Pasteboard {
public:
  /// Connects in the background to the server that DISPLAY names. `holderExecutable` is lumiwren-pasteboard.
  explicit X11Pasteboard(std::filesystem::path holderExecutable);
  ~X11Pasteboard() override;

  PasteboardContents contents(const std::stop_token &token) override;
  std::int64_t changeCount() override;
  std::optional<std::string> string(const std::stop_token &token) override;
  void setContents(PasteboardContents contents, PasteboardLifetime lifetime) override;
  void setString(std::string_view text, PasteboardLifetime lifetime) override;

  /// Puts the text of the PRIMARY selection on the pasteboard, as temporary, if it is owned by the
  /// application that `window` belongs to. False when nothing was put there.
  bool copyPrimary(std::uint32_t window, const std::stop_token &token);

private:
  std::optional<std::string> read(Selection selection, const std::stop_token &token);

  std::unique_ptr<SelectionThread> selections_;
  std::unique_ptr<PasteboardHolderClient> holder_;
};

}  // namespace lumiwren
