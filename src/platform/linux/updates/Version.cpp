#include "platform/linux/updates/Version.h"

#include "base/ASCII.h"

#include <algorithm>
#include <cstddef>

namespace lumiwren {
namespace {

constexpr std::size_t longestVersion = 64;

bool isSeparator(char character) {
  return character == '.' || character == '-' || character == '~';
}

/// Takes the characters off the front of `text` for which `belongs` holds.
template <typename Belongs>
std::string_view take(std::string_view &text, Belongs belongs) {
  const auto end = std::find_if_not(text.begin(), text.end(), belongs);
  const auto taken = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(taken.size());
  return taken;
}

/// Digits of any length, by what they say.
std::weak_ordering compareNumbers(std::string_view one, std::string_view other) {
  take(one, [](char character) { return character == '0'; });
  take(other, [](char character) { return character == '0'; });
  return one.size() != other.size() ? std::weak_ordering(one.size() <=> other.size()) : one <=> other;
}

/// Takes the leading numbers of a version with the dots between them.
std::string_view takeRelease(std::string_view &version) {
  std::size_t end = 0;
  while (end < version.size() &&
         (ascii::isDigit(version[end]) ||
          (version[end] == '.' && end + 1 < version.size() && ascii::isDigit(version[end + 1])))) {
    ++end;
  }
  const auto release = version.substr(0, end);
  version.remove_prefix(end);
  return release;
}

std::weak_ordering compareReleases(std::string_view one, std::string_view other) {
  while (!one.empty() || !other.empty()) {
    const auto order = compareNumbers(take(one, ascii::isDigit), take(other, ascii::isDigit));
    if (std::is_neq(order)) {
      return order;
    }
    one.remove_prefix(std::min<std::size_t>(1, one.size()));
    other.remove_prefix(std::min<std::size_t>(1, other.size()));
  }
  return std::weak_ordering::equivalent;
}

std::weak_ordering comparePreReleases(std::string_view one, std::string_view other) {
  for (;;) {
    take(one, isSeparator);
    take(other, isSeparator);
    if (one.empty() || other.empty()) {
      return !one.empty() <=> !other.empty();
    }
    const bool isNumber = ascii::isDigit(one.front());
    if (isNumber != ascii::isDigit(other.front())) {
      return isNumber ? std::weak_ordering::less : std::weak_ordering::greater;
    }
    const auto order = isNumber ? compareNumbers(take(one, ascii::isDigit), take(other, ascii::isDigit))
                                : take(one, ascii::isLetter) <=> take(other, ascii::isLetter);
    if (std::is_neq(order)) {
      return order;
    }
  }
}

std::string_view withoutBuild(std::string_view version) {
  return version.substr(0, version.find('+'));
}

}  // namespace

bool isVersion(std::string_view text) {
  const bool isPlain = std::all_of(text.begin(), text.end(), [](char character) {
    return ascii::isAlphanumeric(character) || isSeparator(character) || character == '+';
  });
  if (!isPlain || text.empty() || text.size() > longestVersion || !ascii::isDigit(text.front())) {
    return false;
  }
  auto rest = text;
  takeRelease(rest);
  return rest.empty() || rest.front() != '.';
}

std::weak_ordering compareVersions(std::string_view one, std::string_view other) {
  one = withoutBuild(one);
  other = withoutBuild(other);
  const auto order = compareReleases(takeRelease(one), takeRelease(other));
  if (std::is_neq(order)) {
    return order;
  }
  if (one.empty() != other.empty()) {
    return one.empty() ? std::weak_ordering::greater : std::weak_ordering::less;
  }
  return comparePreReleases(one, other);
}

}  // namespace lumiwren
