#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace lumiwren::unicode {

/// One code point of a UTF-8 text and the number of bytes it takes.
struct CodePoint {
  char32_t value;
  std::size_t length;
};

/// The code point that begins at `offset`; empty where no valid one does.
std::optional<CodePoint> decodeAt(std::string_view text, std::size_t offset);
/// The code point that ends just before `end`; empty where no valid one does.
std::optional<CodePoint> decodeBefore(std::string_view text, std::size_t end);
bool isValidUTF8(std::string_view text);

/// Decimal digits of every script (general category Nd).
bool isDecimalDigit(char32_t character);
/// White space in the sense of a regular expression's \s: category Z, and TAB to CR, and NEL.
bool isWhitespace(char32_t character);
/// The platform's white-space set for trimming: space separators (Zs) and TAB, no line ends.
bool isHorizontalSpace(char32_t character);

/// Without leading and trailing horizontal space.
std::string_view trimHorizontalSpace(std::string_view text);
/// Without leading and trailing white space of any kind.
std::string_view trimWhitespace(std::string_view text);
/// Every code point in lower case; bytes that are no valid UTF-8 stay as they are.
std::string toLower(std::string_view text);

}  // namespace lumiwren::unicode
