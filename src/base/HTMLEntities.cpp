#include "base/HTMLEntities.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace lumiwren {

namespace {

#include "base/HTMLEntityTable.inc"

constexpr std::size_t entityCount = std::size(nameOffsets) - 1;
constexpr std::size_t longestName = 31;
// Longer numbers are text.
constexpr std::size_t longestNumber = 8;

std::string_view nameAt(std::size_t index) {
  return {names + nameOffsets[index], static_cast<std::size_t>(nameOffsets[index + 1] - nameOffsets[index])};
}

std::size_t numericReference(std::string_view text, std::string &out) {
  const bool hexadecimal = text.size() > 2 && (text[2] == 'x' || text[2] == 'X');
  const std::size_t begin = hexadecimal ? 3 : 2;
  const auto *first = text.data() + std::min(begin, text.size());
  const auto *last = text.data() + std::min(begin + longestNumber, text.size());
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(first, last, value, hexadecimal ? 16 : 10);
  const auto length = static_cast<std::size_t>(end - text.data());
  if (error != std::errc{} || length >= text.size() || *end != ';') {
    return 0;
  }
  const bool isCharacter = value > 0 && value < 0x110000 && (value < 0xD800 || value > 0xDFFF);
  std::array<utf8proc_uint8_t, 4> encoded{};
  const auto size =
      utf8proc_encode_char(isCharacter ? static_cast<utf8proc_int32_t>(value) : 0xFFFD, encoded.data());
  out.append(reinterpret_cast<const char *>(encoded.data()), static_cast<std::size_t>(size));
  return length + 1;
}

}  // namespace

std::string_view htmlEntity(std::string_view name) {
  std::size_t low = 0;
  std::size_t high = entityCount;
  while (low < high) {
    const auto middle = low + (high - low) / 2;
    const auto order = nameAt(middle).compare(name);
    if (order == 0) {
      return {texts + textOffsets[middle],
              static_cast<std::size_t>(textOffsets[middle + 1] - textOffsets[middle])};
    }
    if (order < 0) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return {};
}

std::size_t appendCharacterReference(std::string_view text, std::size_t offset, std::string &out) {
  const auto rest = text.substr(offset, longestName + 2);
  if (rest.size() > 1 && rest[1] == '#') {
    return numericReference(rest, out);
  }
  const auto end = rest.find(';');
  if (end == std::string_view::npos) {
    return 0;
  }
  const auto value = htmlEntity(rest.substr(1, end - 1));
  out.append(value);
  return value.empty() ? 0 : end + 1;
}

}  // namespace lumiwren
