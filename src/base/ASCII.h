#pragma once

/// Classes of ASCII characters, whatever the locale; no byte above 127 belongs to any.
namespace lumiwren::ascii {

constexpr bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

constexpr bool isLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

constexpr bool isAlphanumeric(char character) {
  return isLetter(character) || isDigit(character);
}

/// White space in the sense of C: space, and TAB to CR.
constexpr bool isSpace(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

}  // namespace lumiwren::ascii
