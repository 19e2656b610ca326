#include "platform/linux/updates/ReleaseNotes.h"

#include "base/Unicode.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::size_t longest = 100'000;

using Names = std::pair<std::string_view, std::string_view>;
constexpr std::array namedCharacters{
    Names{"amp", "&"},         Names{"lt", "<"},         Names{"gt", ">"},         Names{"quot", "\""},
    Names{"apos", "'"},        Names{"nbsp", "\u00a0"},  Names{"copy", "\u00a9"},  Names{"reg", "\u00ae"},
    Names{"trade", "\u2122"},  Names{"ndash", "\u2013"}, Names{"mdash", "\u2014"}, Names{"lsquo", "\u2018"},
    Names{"rsquo", "\u2019"},  Names{"ldquo", "\u201c"}, Names{"rdquo", "\u201d"}, Names{"bull", "\u2022"},
    Names{"hellip", "\u2026"}, Names{"times", "\u00d7"}, Names{"rarr", "\u2192"},  Names{"middot", "\u00b7"},
};
constexpr std::array<std::string_view, 24> ownLines{
    "address", "article", "blockquote", "br", "dd", "div", "dl",  "dt",      "h1",    "h2", "h3", "h4",
    "h5",      "h6",      "hr",         "li", "ol", "p",   "pre", "section", "table", "tr", "ul", "header"};
constexpr std::array<std::string_view, 7> paragraphs{"h1", "h2", "h3", "h4", "h5", "h6", "p"};
constexpr std::array<std::string_view, 4> unseen{"script", "style", "head", "title"};

template <typename List>
bool holds(const List &list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

bool isLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isSpace(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

std::string encode(char32_t point) {
  const auto byte = [](char32_t bits) { return static_cast<char>(static_cast<std::uint8_t>(bits)); };
  const auto next = [&](int shift) { return byte(0x80U | ((point >> shift) & 0x3fU)); };
  if (point < 0x80) {
    return {byte(point)};
  }
  if (point < 0x800) {
    return {byte(0xc0U | (point >> 6)), next(0)};
  }
  if (point < 0x10000) {
    return {byte(0xe0U | (point >> 12)), next(6), next(0)};
  }
  return {byte(0xf0U | (point >> 18)), next(12), next(6), next(0)};
}

/// "#233" or "#xe9"; empty for what is no character that may be shown.
std::optional<std::string> numberedCharacter(std::string_view digits) {
  digits.remove_prefix(1);
  const bool isHexadecimal = !digits.empty() && (digits.front() == 'x' || digits.front() == 'X');
  if (isHexadecimal) {
    digits.remove_prefix(1);
  }
  char32_t point = 0;
  for (const char digit : digits) {
    const auto lower = static_cast<char>(digit | 0x20);
    char32_t value = 16;
    if (digit >= '0' && digit <= '9') {
      value = static_cast<char32_t>(digit - '0');
    } else if (lower >= 'a' && lower <= 'f') {
      value = static_cast<char32_t>(lower - 'a') + 10;
    }
    const char32_t base = isHexadecimal ? 16 : 10;
    if (value >= base) {
      return std::nullopt;
    }
    point = point * base + value;
    if (point > 0x10ffff) {
      return std::nullopt;
    }
  }
  const bool isControl = point < 0x20 && point != '\t' && point != '\n';
  const bool isSurrogate = point >= 0xd800 && point < 0xe000;
  return digits.empty() || isControl || isSurrogate ? std::nullopt : std::optional(encode(point));
}

/// The character that a reference at the front of `text` stands for; takes the reference off.
std::optional<std::string> takeReference(std::string_view &text) {
  constexpr std::size_t longestReference = 10;
  const auto end = text.substr(0, longestReference).find(';');
  if (end == std::string_view::npos || end < 2) {
    return std::nullopt;
  }
  const auto name = text.substr(1, end - 1);
  std::optional<std::string> character;
  if (name.front() == '#') {
    character = numberedCharacter(name);
  } else {
    const auto *const found = std::find_if(namedCharacters.begin(), namedCharacters.end(),
                                           [&](const auto &entry) { return entry.first == name; });
    if (found != namedCharacters.end()) {
      character = std::string(found->second);
    }
  }
  if (character) {
    text.remove_prefix(end + 1);
  }
  return character;
}

/// Whether a tag, comment or declaration begins here, rather than "1 < 2".
bool beginsTag(std::string_view text) {
  if (text.size() < 2 || text[0] != '<') {
    return false;
  }
  return isLetter(text[1]) || text[1] == '!' || text[1] == '?' ||
         (text[1] == '/' && text.size() > 2 && isLetter(text[2]));
}

/// Takes a tag off the front and returns its name, in lower case and with a "/" before it if it is an end;
/// empty for comments and declarations. One that does not end takes all the rest.
std::string takeTag(std::string_view &text) {
  const auto takeUntil = [&text](std::string_view end) {
    const auto found = text.find(end);
    text.remove_prefix(found == std::string_view::npos ? text.size() : found + end.size());
  };
  if (text.starts_with("<!--")) {
    takeUntil("-->");
    return {};
  }
  std::size_t at = text[1] == '/' ? 2 : 1;
  const std::size_t begin = at;
  while (at < text.size() && (isLetter(text[at]) || (text[at] >= '0' && text[at] <= '9'))) {
    ++at;
  }
  std::string name = unicode::toLower(text.substr(begin, at - begin));
  // A ">" within an attribute's value does not end the tag.
  char quote = '\0';
  for (; at < text.size() && (quote != '\0' || text[at] != '>'); ++at) {
    if (quote != '\0') {
      quote = text[at] == quote ? '\0' : quote;
    } else if ((text[at] == '"' || text[at] == '\'') && text[at - 1] == '=') {
      quote = text[at];
    }
  }
  const bool isEnd = begin == 2;
  text.remove_prefix(std::min(at + 1, text.size()));
  return isEnd && !name.empty() ? "/" + name : name;
}

/// Text as it stands, or with white space joined as HTML does.
class Page {
public:
  explicit Page(bool joinsSpace) : joinsSpace_(joinsSpace) {}

  void add(std::string_view character) {
    if (joinsSpace_ && character.size() == 1 && isSpace(character.front())) {
      space_ = true;
      return;
    }
    if (std::exchange(space_, false) && !text_.empty() && text_.back() != '\n' && text_.back() != ' ') {
      text_ += ' ';
    }
    text_ += character;
  }
  /// `count` line ends, not more than that after what there is.
  void breakLine(std::size_t count) {
    space_ = false;
    const auto last = text_.find_last_not_of('\n');
    if (last == std::string::npos) {
      text_.clear();
      return;
    }
    const auto ends = text_.size() - last - 1;
    text_.append(count > ends ? count - ends : 0, '\n');
  }
  bool isFull() const { return text_.size() >= longest; }
  std::string take() { return std::string(unicode::trimWhitespace(text_)); }

private:
  const bool joinsSpace_;
  bool space_ = false;
  std::string text_;
};

}  // namespace

std::string plainReleaseNotes(std::string_view notes) {
  bool isMarkup = false;
  for (auto at = notes.find('<'); at != std::string_view::npos && !isMarkup; at = notes.find('<', at + 1)) {
    isMarkup = beginsTag(notes.substr(at));
  }
  Page page(isMarkup);
  std::string hidden;  // the element whose end is awaited
  while (!notes.empty() && !page.isFull()) {
    if (beginsTag(notes)) {
      const auto tag = takeTag(notes);
      const auto name = std::string_view(tag).substr(tag.starts_with('/') ? 1 : 0);
      if (!hidden.empty()) {
        hidden = tag.starts_with('/') && name == hidden ? std::string() : hidden;
      } else if (holds(unseen, tag)) {
        hidden = tag;
      } else if (holds(ownLines, name)) {
        page.breakLine(holds(paragraphs, name) ? 2 : 1);
        if (tag == "li") {
          page.add("\u2022 ");
        }
      }
      continue;
    }
    if (const auto character = notes.front() == '&' ? takeReference(notes) : std::nullopt) {
      if (hidden.empty()) {
        page.add(*character);
      }
      continue;
    }
    const auto point = unicode::decodeAt(notes, 0);
    const std::size_t length = point ? point->length : 1;
    if (hidden.empty() && point) {
      page.add(notes.substr(0, length));
    }
    notes.remove_prefix(length);
  }
  return page.take();
}

}  // namespace lumiwren
