#include "base/UUID.h"

#include "base/ASCII.h"

#include <sys/random.h>

#include <cstdlib>

namespace lumiwren {

namespace {

constexpr bool isHyphenPosition(std::size_t position) {
  return position == 8 || position == 13 || position == 18 || position == 23;
}

std::optional<std::uint8_t> hexDigit(char character) {
  if (ascii::isDigit(character)) {
    return static_cast<std::uint8_t>(character - '0');
  }
  if (character >= 'a' && character <= 'f') {
    return static_cast<std::uint8_t>(character - 'a' + 10);
  }
  if (character >= 'A' && character <= 'F') {
    return static_cast<std::uint8_t>(character - 'A' + 10);
  }
  return std::nullopt;
}

}  // namespace

UUID UUID::random() {
  UUID uuid;
  if (getrandom(uuid.bytes.data(), uuid.bytes.size(), 0) != static_cast<ssize_t>(uuid.bytes.size())) {
    std::abort();  // Requests of up to 256 bytes are never cut short once the system has started.
  }
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);  // version 4 (RFC 9562)
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);
  return uuid;
}

std::optional<UUID> UUID::parse(std::string_view text) {
  if (text.size() != 36) {
    return std::nullopt;
  }
  UUID uuid;
  std::size_t digits = 0;
  for (std::size_t position = 0; position < text.size(); ++position) {
    if (isHyphenPosition(position)) {
      if (text[position] != '-') {
        return std::nullopt;
      }
      continue;
    }
    const auto digit = hexDigit(text[position]);
    if (!digit) {
      return std::nullopt;
    }
    auto &byte = uuid.bytes[digits / 2];
    byte = static_cast<std::uint8_t>((byte << 4) | *digit);
    ++digits;
  }
  return uuid;
}

std::string UUID::toString() const {
  static constexpr char hexDigits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(36);
  for (const auto byte : bytes) {
    if (isHyphenPosition(text.size())) {
      text.push_back('-');
    }
    text.push_back(hexDigits[byte >> 4]);
    text.push_back(hexDigits[byte & 0x0F]);
  }
  return text;
}

}  // namespace lumiwren
