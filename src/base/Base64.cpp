#include "base/Base64.h"

#include <algorithm>
#include <cstdint>

namespace lumiwren {

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string encodeBase64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t offset = 0; offset < bytes.size(); offset += 3) {
    const auto group = bytes.substr(offset, 3);
    std::uint32_t bits = 0;
    for (std::size_t index = 0; index < 3; ++index) {
      bits = bits << 8 | (index < group.size() ? static_cast<unsigned char>(group[index]) : 0U);
    }
    for (std::size_t index = 0; index < 4; ++index) {
      text.push_back(index <= group.size() ? alphabet[bits >> (18 - 6 * index) & 0x3F] : '=');
    }
  }
  return text;
}

std::optional<std::string> decodeBase64(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  const auto padding = text.ends_with("==") ? 2U : text.ends_with("=") ? 1U : 0U;
  std::uint32_t bits = 0;
  for (std::size_t offset = 0; offset < text.size(); ++offset) {
    const bool isPadding = offset >= text.size() - padding;
    const auto value = isPadding ? 0 : alphabet.find(text[offset]);
    if (value == std::string_view::npos) {
      return std::nullopt;
    }
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    if (offset % 4 == 3) {
      for (const auto shift : {16U, 8U, 0U}) {
        bytes.push_back(static_cast<char>(bits >> shift & 0xFF));
      }
    }
  }
  bytes.resize(bytes.size() - std::min<std::size_t>(padding, bytes.size()));
  // Also refuses a length that is no multiple of four, and bits that no byte uses.
  return encodeBase64(bytes) == text ? std::optional(bytes) : std::nullopt;
}

}  // namespace lumiwren
