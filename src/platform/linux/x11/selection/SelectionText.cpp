#include "platform/linux/x11/selection/SelectionText.h"

#include "base/Unicode.h"

#include <cstdint>

namespace lumiwren {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD
// Compound text switches to UTF-8 and back by these sequences, and is Latin-1 otherwise.
constexpr std::string_view beginUTF8 = "\x1B%G";
constexpr std::string_view endUTF8 = "\x1B%@";

void appendUTF8(std::string &result, std::string_view text) {
  for (std::size_t offset = 0; offset < text.size();) {
    if (const auto point = unicode::decodeAt(text, offset)) {
      result.append(text.substr(offset, point->length));
      offset += point->length;
    } else {
      result.append(replacement);
      ++offset;
    }
  }
}

void appendLatin1(std::string &result, std::string_view text) {
  for (const char character : text) {
    const auto byte = static_cast<std::uint8_t>(character);
    if (byte < 0x80) {
      result.push_back(character);
    } else {
      result.push_back(static_cast<char>(0xC0 | (byte >> 6)));
      result.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
    }
  }
}

std::optional<std::string> decodeCompoundText(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto latin1 = text.substr(0, text.find('\x1B'));
    appendLatin1(result, latin1);
    text.remove_prefix(latin1.size());
    if (text.empty()) {
      break;
    }
    if (!text.starts_with(beginUTF8)) {
      return std::nullopt;  // One of the national character sets; every owner of these has UTF-8, too.
    }
    text.remove_prefix(beginUTF8.size());
    const auto segment = text.substr(0, text.find(endUTF8));
    appendUTF8(result, segment);
    text.remove_prefix(segment.size());
    if (!text.empty()) {
      text.remove_prefix(endUTF8.size());
    }
  }
  return result;
}

Bytes toLatin1(std::string_view text) {
  Bytes result;
  for (std::size_t offset = 0; offset < text.size();) {
    const auto point = unicode::decodeAt(text, offset);
    result.push_back(point && point->value <= 0xFF ? static_cast<std::uint8_t>(point->value) : '?');
    offset += point ? point->length : 1;
  }
  return result;
}

}  // namespace

std::optional<std::string> decodeSelectionText(std::string_view encoding, const Bytes &bytes) {
  std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
  // Some owners count the end mark of a C string as part of it.
  while (text.ends_with('\0')) {
    text.remove_suffix(1);
  }
  std::string result;
  if (encoding == "UTF8_STRING" || encoding == "text/plain;charset=utf-8") {
    appendUTF8(result, text);
  } else if (encoding == "STRING" || encoding == "C_STRING") {
    appendLatin1(result, text);
  } else if (encoding == "COMPOUND_TEXT") {
    return decodeCompoundText(text);
  } else {
    return std::nullopt;
  }
  return result;
}

PasteboardContents plainTextContents(std::string_view text) {
  const Bytes bytes(text.begin(), text.end());
  return {{"UTF8_STRING", bytes},
          {"text/plain;charset=utf-8", bytes},
          {"STRING", toLatin1(text)},
          {"TEXT", bytes, "UTF8_STRING"},
          {"text/plain", bytes}};
}

}  // namespace lumiwren
