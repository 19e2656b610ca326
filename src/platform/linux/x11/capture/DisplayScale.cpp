#include "platform/linux/x11/capture/DisplayScale.h"

#include <algorithm>
#include <charconv>

namespace lumiwren {
namespace {

std::optional<double> positiveNumber(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  double number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() && number > 0 ? std::optional(number) : std::nullopt;
}

std::optional<double> dotsPerInch(std::string_view resources) {
  constexpr std::string_view name = "Xft.dpi:";
  while (!resources.empty()) {
    const auto end = std::min(resources.find('\n'), resources.size());
    const auto line = resources.substr(0, end);
    resources.remove_prefix(std::min(end + 1, resources.size()));
    if (line.starts_with(name)) {
      return positiveNumber(line.substr(name.size()));
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<double> chosenScale(std::string_view resources, std::string_view qtScaleFactor) {
  const auto resolution = dotsPerInch(resources);
  const auto factor = positiveNumber(qtScaleFactor);
  if (!resolution && !factor) {
    return std::nullopt;
  }
  return std::clamp(resolution.value_or(96) / 96 * factor.value_or(1), 1.0, 4.0);
}

double suggestedScale(int pixels, int millimetres) {
  constexpr double millimetresPerInch = 25.4;
  return millimetres > 0 && pixels * millimetresPerInch / millimetres > 170 ? 2 : 1;
}

}  // namespace lumiwren
