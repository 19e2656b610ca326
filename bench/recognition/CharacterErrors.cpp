#include "recognition/CharacterErrors.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace lumiwren::bench {
namespace {

std::u32string singleSpaced(const std::u32string &text) {
  std::u32string result;
  for (const char32_t character : text) {
    const bool isSpace = character <= U' ' || character == U'\u00A0' || character == U'\u3000';
    if (!isSpace) {
      result += character;
    } else if (!result.empty() && result.back() != U' ') {
      result += U' ';
    }
  }
  if (!result.empty() && result.back() == U' ') {
    result.pop_back();
  }
  return result;
}

}  // namespace

double characterErrorRate(const std::u32string &expected, const std::u32string &read) {
  const auto right = singleSpaced(expected);
  const auto given = singleSpaced(read);
  std::vector<std::size_t> row(given.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < right.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < given.size(); ++j) {
      const std::size_t changed = diagonal + (right[i] == given[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
    }
  }
  return static_cast<double>(row.back()) / static_cast<double>(right.size());
}

}  // namespace lumiwren::bench
