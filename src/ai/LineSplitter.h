#pragma once

#include <cstring>
#include <string>
#include <string_view>

namespace lumiwren {

/// Cuts a byte stream, which arrives in pieces of any size, into lines. A line ends with "\n" or "\r\n",
/// which is no part of it; a piece may end anywhere, also inside a character or between the two bytes of
/// "\r\n".
class LineSplitter {
public:
  /// Calls `onLine` with each line that `bytes` completes. A line is valid only during the call.
  template <typename OnLine>
  void feed(std::string_view bytes, OnLine &&onLine) {
    while (const void *const end = std::memchr(bytes.data(), '\n', bytes.size())) {
      const auto length = static_cast<std::size_t>(static_cast<const char *>(end) - bytes.data());
      const auto line = bytes.substr(0, length);
      bytes.remove_prefix(length + 1);
      if (pending_.empty()) {
        onLine(withoutCarriageReturn(line));
      } else {
        pending_.append(line);
        onLine(withoutCarriageReturn(pending_));
        pending_.clear();
      }
    }
    pending_.append(bytes);
  }

  /// At the end of the stream: what came after the last line end is a line too, when there is any.
  template <typename OnLine>
  void finish(OnLine &&onLine) {
    if (!pending_.empty()) {
      onLine(withoutCarriageReturn(pending_));
      pending_.clear();
    }
  }

private:
  static std::string_view withoutCarriageReturn(std::string_view line) {
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
  }

  std::string pending_;
};

}  // namespace lumiwren
