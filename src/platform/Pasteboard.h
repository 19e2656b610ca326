#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// What one type of the pasteboard holds. Types are the names by which the owner offers them.
struct PasteboardItem {
  std::string type;
  Bytes bytes;
  /// What the owner calls the form of the bytes where that is not the type's own name (a TEXT that is a
  /// UTF8_STRING); empty where it is. Kept so that what is put back reaches others as its owner gave it.
  std::string encoding = {};
  /// Bytes of one unit: 1, 2 or 4, in the machine's byte order.
  std::uint8_t unit = 1;
  friend bool operator==(const PasteboardItem &, const PasteboardItem &) = default;
};

/// Every type once, in the owner's order.
using PasteboardContents = std::vector<PasteboardItem>;

/// Whether programs that keep a history of the pasteboard should record what is put there.
enum class PasteboardLifetime { Lasting, Temporary };

/// The desktop's general pasteboard. Any thread. Reading waits for another program, within the stated limits,
/// and throws CancellationError as soon as the token is stopped; nothing else here waits for anybody.
class Pasteboard {
public:
  virtual ~Pasteboard() = default;

  /// Every type that the owner offers and gives within 2 s for all together; a type that does not come is
  /// left out, and what merely describes the transfer is no type. Empty when nobody owns the pasteboard.
  virtual PasteboardContents contents(const std::stop_token &token) = 0;
  /// Grows each time the pasteboard gets a new owner or new contents, by this program or by another.
  virtual std::int64_t changeCount() = 0;
  /// The plain text, as UTF-8; empty when there is none or it does not come within 2 s.
  virtual std::optional<std::string> string(const std::stop_token &token) = 0;
  /// Replaces what is there; no contents empty the pasteboard. What is put here can still be pasted after
  /// this program has ended, in whatever way it ends.
  virtual void setContents(PasteboardContents contents, PasteboardLifetime lifetime) = 0;
  /// Replaces what is there by a plain text under every name that plain text goes by.
  virtual void setString(std::string_view text, PasteboardLifetime lifetime) = 0;
};

}  // namespace lumiwren
