#pragma once

#include "base/Task.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stop_token>
#include <vector>

namespace lumiwren {

/// Pixels that hang together.
struct Component {
  int left = std::numeric_limits<int>::max(), top = std::numeric_limits<int>::max();
  int right = 0, bottom = 0;  // behind the last pixel
  std::size_t area = 0;       // pixels
  std::size_t first = 0;      // the place of its first pixel

  int width() const { return right - left; }
  int height() const { return bottom - top; }
};

/// A picture taken to pieces.
struct Components {
  std::vector<std::uint32_t> labels;  // for each pixel the number of its component
  std::vector<Component> all;

  /// `joins(a, b)` says whether two neighbouring pixels, given by their places, belong together.
  /// `isDiagonal` joins corners, too. Throws CancellationError when the token is stopped.
  template <typename Joins>
  static Components of(int width, int height, bool isDiagonal, const std::stop_token &token, Joins joins) {
    const auto columns = static_cast<std::size_t>(width);
    Components result;
    auto &parents = result.labels;
    parents.resize(columns * static_cast<std::size_t>(height));
    const auto root = [&](std::uint32_t at) {
      while (parents[at] != at) {
        parents[at] = parents[parents[at]];
        at = parents[at];
      }
      return at;
    };
    std::size_t at = 0;
    for (int y = 0; y < height; ++y) {
      throwIfStopped(token);
      for (int x = 0; x < width; ++x, ++at) {
        auto mine = static_cast<std::uint32_t>(at);
        parents[at] = mine;
        const auto join = [&](std::size_t other) {
          if (joins(other, at)) {
            const auto theirs = root(static_cast<std::uint32_t>(other));
            parents[std::max(mine, theirs)] = std::min(mine, theirs);
            mine = std::min(mine, theirs);
          }
        };
        if (x > 0) {
          join(at - 1);
        }
        if (y > 0) {
          join(at - columns);
          if (isDiagonal && x > 0) {
            join(at - columns - 1);
          }
          if (isDiagonal && x + 1 < width) {
            join(at - columns + 1);
          }
        }
      }
    }
    // A root comes before all that it is the root of.
    at = 0;
    for (int y = 0; y < height; ++y) {
      throwIfStopped(token);
      for (int x = 0; x < width; ++x, ++at) {
        if (parents[at] == at) {
          parents[at] = static_cast<std::uint32_t>(result.all.size());
          result.all.emplace_back().first = at;
        } else {
          parents[at] = parents[parents[at]];
        }
        auto &component = result.all[parents[at]];
        component.left = std::min(component.left, x);
        component.top = std::min(component.top, y);
        component.right = std::max(component.right, x + 1);
        component.bottom = std::max(component.bottom, y + 1);
        ++component.area;
      }
    }
    return result;
  }
};

}  // namespace lumiwren
