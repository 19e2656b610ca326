#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace lumiwren {

/// Text that must not outlive its use: wiped when it is dropped or replaced, and with no way to print it.
class Secret {
public:
  Secret() = default;
  /// Takes the text over and wipes what `text` leaves behind.
  explicit Secret(std::string &&text);
  static Secret copyOf(std::string_view text);

  Secret(const Secret &) = default;
  Secret(Secret &&other) noexcept;
  Secret &operator=(const Secret &other);
  Secret &operator=(Secret &&other) noexcept;
  ~Secret();

  /// The text in the clear, for as long as this object lives unchanged.
  std::string_view reveal() const noexcept { return text_; }

  friend bool operator==(const Secret &, const Secret &) = default;

private:
  std::string text_;
};

/// Overwrites and empties `text` in a way that the compiler keeps.
void wipe(std::string &text) noexcept;

}  // namespace lumiwren
