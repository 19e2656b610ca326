#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace lumiwren {

/// Remembers which parts were made last, so that the others can be let go. A part may be named again.
class Recent {
public:
  explicit Recent(std::size_t limit) : limit_(limit) {}

  /// Notes a part that was made; `letGo` is called with one that is to make room for it, if any.
  void add(std::size_t part, const std::function<void(std::size_t)> &letGo) {
    parts_.push_back(part);
    if (parts_.size() > limit_) {
      const auto oldest = parts_.front();
      parts_.erase(parts_.begin());
      if (oldest != part) {
        letGo(oldest);
      }
    }
  }
  void clear() { parts_.clear(); }

private:
  std::size_t limit_;
  std::vector<std::size_t> parts_;
};

}  // namespace lumiwren
