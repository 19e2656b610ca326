#include "base/Unicode.h"

#include "base/ASCII.h"

#include <utf8proc.h>

#include <array>
#include <cstdint>

namespace lumiwren::unicode {

namespace {

bool isASCII(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

template <typename Predicate>
std::string_view trim(std::string_view text, Predicate isTrimmed) {
  // Almost every text begins and ends in ASCII: no decoding for those.
  while (!text.empty()) {
    const auto point = isASCII(text.front()) ? CodePoint{static_cast<unsigned char>(text.front()), 1}
                                             : decodeAt(text, 0).value_or(CodePoint{0, 0});
    if (!isTrimmed(point.value)) {
      break;
    }
    text.remove_prefix(point.length);
  }
  while (!text.empty()) {
    const auto point = isASCII(text.back()) ? CodePoint{static_cast<unsigned char>(text.back()), 1}
                                            : decodeBefore(text, text.size()).value_or(CodePoint{0, 0});
    if (!isTrimmed(point.value)) {
      break;
    }
    text.remove_suffix(point.length);
  }
  return text;
}

}  // namespace

std::optional<CodePoint> decodeAt(std::string_view text, std::size_t offset) {
  if (offset >= text.size()) {
    return std::nullopt;
  }
  const auto first = static_cast<unsigned char>(text[offset]);
  if (first < 0x80) {
    return CodePoint{first, 1};
  }
  utf8proc_int32_t value = 0;
  const auto length = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t *>(text.data()) + offset,
                                       static_cast<utf8proc_ssize_t>(text.size() - offset), &value);
  if (length <= 0) {
    return std::nullopt;
  }
  return CodePoint{static_cast<char32_t>(value), static_cast<std::size_t>(length)};
}

std::optional<CodePoint> decodeBefore(std::string_view text, std::size_t end) {
  for (std::size_t length = 1; length <= 4 && length <= end; ++length) {
    const bool continuation = (static_cast<unsigned char>(text[end - length]) & 0xC0) == 0x80;
    if (!continuation) {
      const auto point = decodeAt(text.substr(0, end), end - length);
      return point && point->length == length ? point : std::nullopt;
    }
  }
  return std::nullopt;
}

bool isValidUTF8(std::string_view text) {
  for (std::size_t offset = 0; offset < text.size();) {
    const auto point = decodeAt(text, offset);
    if (!point) {
      return false;
    }
    offset += point->length;
  }
  return true;
}

bool isDecimalDigit(char32_t character) {
  if (character < 0x80) {
    return ascii::isDigit(static_cast<char>(character));
  }
  return utf8proc_category(static_cast<utf8proc_int32_t>(character)) == UTF8PROC_CATEGORY_ND;
}

bool isWhitespace(char32_t character) {
  if (character < 0x80) {
    return ascii::isSpace(static_cast<char>(character));
  }
  if (character == 0x85) {
    return true;
  }
  const auto category = utf8proc_category(static_cast<utf8proc_int32_t>(character));
  return category == UTF8PROC_CATEGORY_ZS || category == UTF8PROC_CATEGORY_ZL ||
         category == UTF8PROC_CATEGORY_ZP;
}

bool isHorizontalSpace(char32_t character) {
  if (character < 0x80) {
    return character == ' ' || character == '\t';
  }
  return utf8proc_category(static_cast<utf8proc_int32_t>(character)) == UTF8PROC_CATEGORY_ZS;
}

std::string_view trimHorizontalSpace(std::string_view text) {
  return trim(text, isHorizontalSpace);
}

std::string_view trimWhitespace(std::string_view text) {
  return trim(text, isWhitespace);
}

std::string toLower(std::string_view text) {
  std::string lower;
  lower.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) {
    if (isASCII(text[offset])) {
      const char byte = text[offset++];
      lower.push_back(byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte);
      continue;
    }
    const auto point = decodeAt(text, offset);
    if (!point) {
      lower.push_back(text[offset]);
      ++offset;
      continue;
    }
    std::array<utf8proc_uint8_t, 4> encoded{};
    const auto length =
        utf8proc_encode_char(utf8proc_tolower(static_cast<utf8proc_int32_t>(point->value)), encoded.data());
    lower.append(reinterpret_cast<const char *>(encoded.data()), static_cast<std::size_t>(length));
    offset += point->length;
  }
  return lower;
}

}  // namespace lumiwren::unicode
