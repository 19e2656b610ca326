#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace lumiwren {

// The parts of inline Markdown that are decided by looking ahead. All are pure; offsets and lengths are in
// bytes.

constexpr bool isASCIIPunctuation(char c) {
  return (c >= '!' && c <= '/') || (c >= ':' && c <= '@') || (c >= '[' && c <= '`') || (c >= '{' && c <= '~');
}

/// How CommonMark sees a character beside a run of delimiters.
enum class CharacterClass { Space, Punctuation, Other };
CharacterClass classOf(char32_t c);

/// The characters of text beside a run of delimiters decide what the run may do.
struct Flanking {
  bool canOpen;
  bool canClose;
};
Flanking flanking(char delimiter, CharacterClass before, CharacterClass after);

/// The address in a URI autolink such as <https://a.example> whose "<" stands at `offset`; empty where there
/// is none.
std::string_view scanURIAutolink(std::string_view text, std::size_t offset);
/// The same for an e-mail autolink such as <a@b.example>.
std::string_view scanEmailAutolink(std::string_view text, std::size_t offset);

/// What follows the text of an inline link.
struct LinkTarget {
  /// As written, without the pointed brackets.
  std::string_view destination;
  /// Behind the closing parenthesis.
  std::size_t end;
};
/// The target of an inline link, (destination "title"), whose "(" is expected at `offset`.
std::optional<LinkTarget> scanLinkTarget(std::string_view text, std::size_t offset);

/// Finds the ends of raw HTML in one text from left to right. An end that was not found is not looked for
/// again: otherwise a text that opens many constructs and closes none would be read once for each.
class HTMLScanner {
public:
  explicit HTMLScanner(std::string_view text) : text_(text) {}

  /// The length of the tag, comment, processing instruction, declaration or CDATA section whose "<" stands at
  /// `offset`, 0 where there is none. Offsets must not go down from call to call.
  std::size_t scan(std::size_t offset);

private:
  class Terminator {
  public:
    explicit Terminator(std::string_view mark) : mark_(mark) {}
    /// The offset behind the first mark in `text` from `from` on, 0 where there is none.
    std::size_t endAfter(std::string_view text, std::size_t from);

  private:
    std::string_view mark_;
    bool isAbsent_ = false;
  };

  [[nodiscard]] std::size_t openTagEnd(std::size_t at) const;
  [[nodiscard]] std::size_t closingTagEnd(std::size_t at) const;
  [[nodiscard]] std::size_t commentEnd(std::size_t at) const;
  [[nodiscard]] std::size_t declarationEnd(std::size_t at);
  [[nodiscard]] std::size_t attributeEnd(std::size_t at) const;
  [[nodiscard]] std::size_t attributeValueEnd(std::size_t at) const;

  std::string_view text_;
  Terminator instruction_{"?>"};
  Terminator declaration_{">"};
  Terminator cdata_{"]]>"};
};

}  // namespace lumiwren
