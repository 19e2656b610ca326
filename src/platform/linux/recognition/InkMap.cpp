#include "platform/linux/recognition/InkMap.h"

#include "base/Task.h"
#include "platform/linux/recognition/Components.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace lumiwren {
namespace {

/// Neighbours that differ less, in every channel, belong to the same ground: shades from one colour to
/// another take smaller steps.
constexpr int groundStep = 3;
/// The least that ground can be is a selected word, or a button; letters are smaller, or have holes.
constexpr int groundWidth = 24;
constexpr int groundHeight = 9;
constexpr std::size_t groundArea = 4000;
/// The share of its rectangle that ground fills: text covers less than half of it.
constexpr double groundShare = 0.5;
/// The share of the picture that must be ground; photographs have less.
constexpr double leastGround = 0.25;
/// Faint text is made up to this many times as dark.
constexpr int maximumGain = 3;
/// Ink is what is this dark after that.
constexpr int inkDarkness = 60;
/// A frame or rule is longer than letters are, and thin.
constexpr int ruleLength = 40;
constexpr int ruleThickness = 3;

constexpr std::uint32_t noGround = ~0U;

class Mapping {
public:
  Mapping(const Bitmap &bitmap, const std::stop_token &token) : bitmap_(bitmap), token_(token) {}

  std::optional<GreyImage> map() {
    findGround();
    if (groundPixels_ < static_cast<double>(size()) * leastGround) {
      return std::nullopt;
    }
    spreadGround();
    GreyImage result{bitmap_.width, bitmap_.height, distances()};
    removeRules(result);
    return result;
  }

private:
  std::size_t size() const {
    return static_cast<std::size_t>(bitmap_.width) * static_cast<std::size_t>(bitmap_.height);
  }
  int channel(std::size_t at, std::size_t which) const { return bitmap_.rgb[at * 3 + which]; }

  /// Now and then, in the course of a loop over all pixels.
  void checkAt(std::size_t at) const {
    if (at % 4096 == 0) {
      throwIfStopped(token_);
    }
  }

  void findGround() {
    parts_ =
        Components::of(bitmap_.width, bitmap_.height, false, token_, [this](std::size_t a, std::size_t b) {
          return std::abs(channel(a, 0) - channel(b, 0)) <= groundStep &&
                 std::abs(channel(a, 1) - channel(b, 1)) <= groundStep &&
                 std::abs(channel(a, 2) - channel(b, 2)) <= groundStep;
        });
    isGround_.reserve(parts_.all.size());
    for (const auto &part : parts_.all) {
      const double rectangle = static_cast<double>(part.width()) * part.height();
      isGround_.push_back(
          part.width() >= groundWidth && part.height() >= groundHeight &&
          (part.area >= groundArea || static_cast<double>(part.area) >= rectangle * groundShare));
      groundPixels_ += isGround_.back() ? static_cast<double>(part.area) : 0;
    }
  }

  /// Gives every pixel the nearest one of the ground.
  void spreadGround() {
    const auto width = static_cast<std::size_t>(bitmap_.width);
    nearest_.assign(size(), noGround);
    std::vector<std::uint16_t> distance(size(), 0x7fff);
    const auto take = [&](std::size_t at, std::size_t from) {
      if (distance[from] + 1 < distance[at]) {
        distance[at] = static_cast<std::uint16_t>(distance[from] + 1);
        nearest_[at] = nearest_[from];
      }
    };
    for (std::size_t at = 0; at < size(); ++at) {
      checkAt(at);
      if (isGround_[parts_.labels[at]]) {
        nearest_[at] = static_cast<std::uint32_t>(at);
        distance[at] = 0;
        continue;
      }
      if (at % width != 0) {
        take(at, at - 1);
      }
      if (at >= width) {
        take(at, at - width);
      }
    }
    for (std::size_t at = size(); at-- > 0;) {
      checkAt(at);
      if (at % width != width - 1) {
        take(at, at + 1);
      }
      if (at + width < size()) {
        take(at, at + width);
      }
    }
  }

  /// Whether a pixel is where two grounds meet: its colour lies between theirs.
  bool isSeam(std::size_t at) const {
    const auto width = static_cast<std::size_t>(bitmap_.width);
    const auto x = at % width;
    const auto between = [&](std::size_t a, std::size_t b) {
      if (parts_.labels[a] == parts_.labels[b] || !isGround_[parts_.labels[a]] ||
          !isGround_[parts_.labels[b]]) {
        return false;
      }
      for (std::size_t each = 0; each < 3; ++each) {
        const auto [low, high] = std::minmax({channel(a, each), channel(b, each)});
        if (channel(at, each) < low || channel(at, each) > high) {
          return false;
        }
      }
      return true;
    };
    const bool isInside = x > 0 && x + 1 < width && at >= width && at + width < size();
    return isInside &&
           (between(at - 1, at + 1) || between(at - width, at + width) || between(at - 1, at - width) ||
            between(at - 1, at + width) || between(at + 1, at - width) || between(at + 1, at + width));
  }

  std::vector<std::uint8_t> distances() const {
    std::vector<std::uint8_t> result(size());
    std::vector<std::uint8_t> farthest(parts_.all.size());
    for (std::size_t at = 0; at < size(); ++at) {
      checkAt(at);
      const std::size_t ground = nearest_[at];
      if (ground == at || isSeam(at)) {
        continue;
      }
      // The channels count the same: with subpixels, each has a third of a letter's coverage.
      const int sum = std::abs(channel(at, 0) - channel(ground, 0)) +
                      std::abs(channel(at, 1) - channel(ground, 1)) +
                      std::abs(channel(at, 2) - channel(ground, 2));
      result[at] = static_cast<std::uint8_t>(sum / 3);
      auto &most = farthest[parts_.labels[ground]];
      most = std::max(most, result[at]);
    }
    for (std::size_t at = 0; at < size(); ++at) {
      if (result[at] != 0) {
        const int most = std::max<int>(farthest[parts_.labels[nearest_[at]]], 255 / maximumGain);
        result[at] = static_cast<std::uint8_t>(result[at] * 255 / most);
      }
      result[at] = static_cast<std::uint8_t>(255 - result[at]);
    }
    return result;
  }

  void removeRules(GreyImage &map) const {
    auto &pixels = map.pixels;
    const auto isInk = [&](std::size_t at) { return pixels[at] < 255 - inkDarkness; };
    const auto ink = Components::of(map.width, map.height, true, token_,
                                    [&](std::size_t a, std::size_t b) { return isInk(a) == isInk(b); });
    std::vector<bool> isRule;
    isRule.reserve(ink.all.size());
    for (const auto &part : ink.all) {
      const auto [shorter, longer] = std::minmax({part.width(), part.height()});
      const double area = static_cast<double>(part.area);
      isRule.push_back(
          longer >= ruleLength &&
          (shorter <= ruleThickness ||
           (shorter >= groundHeight * 2 && area < 2.0 * ruleThickness * (part.width() + part.height()) &&
            area < 0.2 * part.width() * part.height())));
    }
    for (std::size_t at = 0; at < pixels.size(); ++at) {
      if (isRule[ink.labels[at]] && isInk(at)) {
        pixels[at] = 255;
      }
    }
  }

  const Bitmap &bitmap_;
  const std::stop_token &token_;
  Components parts_;
  std::vector<bool> isGround_;  // by the number of the part
  double groundPixels_ = 0;
  std::vector<std::uint32_t> nearest_;  // the nearest pixel of the ground, for each
};

}  // namespace

std::optional<GreyImage> inkMap(const Bitmap &bitmap, const std::stop_token &token) {
  return Mapping(bitmap, token).map();
}

}  // namespace lumiwren
