#pragma once

#include <random>
#include <span>
#include <string>
#include <string_view>

namespace lumiwren::testing {

/// The same texts on every machine for one seed.
class RandomText {
public:
  explicit RandomText(unsigned seed) : engine_(seed) {}

  std::size_t below(std::size_t bound) { return engine_() % bound; }

  /// Between 1 and `longest` pieces, one after the other.
  std::string of(std::span<const std::string_view> pieces, std::size_t longest) {
    std::string text;
    for (auto count = below(longest) + 1; count > 0; --count) {
      text += pieces[below(pieces.size())];
    }
    return text;
  }

private:
  std::mt19937 engine_;
};

}  // namespace lumiwren::testing
