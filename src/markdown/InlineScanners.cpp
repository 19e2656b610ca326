#include "markdown/InlineScanners.h"

#include "base/ASCII.h"

#include <utf8proc.h>

#include <algorithm>

namespace lumiwren {

namespace {

// How deep parentheses may nest in a destination without pointed brackets.
constexpr std::size_t deepestParentheses = 32;
constexpr std::size_t longestScheme = 32;
constexpr std::size_t longestDomainLabel = 63;

constexpr bool isControlOrSpace(char c) {
  return static_cast<unsigned char>(c) <= 0x20;
}

template <typename Predicate>
std::size_t skipWhile(std::string_view text, std::size_t at, Predicate predicate) {
  while (at < text.size() && predicate(text[at])) {
    ++at;
  }
  return at;
}

bool isAt(std::string_view text, std::size_t at, char c) {
  return at < text.size() && text[at] == c;
}

bool isEscape(std::string_view text, std::size_t at) {
  return text[at] == '\\' && at + 1 < text.size() && isASCIIPunctuation(text[at + 1]);
}

/// Behind a domain label that begins at `at`; `at` itself where there is none.
std::size_t domainLabelEnd(std::string_view text, std::size_t at) {
  const auto end = skipWhile(text, at, [](char c) { return ascii::isAlphanumeric(c) || c == '-'; });
  const bool isLabel = end > at && end - at <= longestDomainLabel && ascii::isAlphanumeric(text[at]) &&
                       ascii::isAlphanumeric(text[end - 1]);
  return isLabel ? end : at;
}

/// The destination that begins at `at`, with its pointed brackets if it has them; empty where there is none.
std::optional<std::string_view> scanDestination(std::string_view text, std::size_t at) {
  const auto begin = at;
  if (isAt(text, at, '<')) {
    for (++at; at < text.size(); ++at) {
      if (text[at] == '>') {
        return text.substr(begin, at + 1 - begin);
      }
      if (text[at] == '\n' || text[at] == '<') {
        return std::nullopt;
      }
      at += text[at] == '\\' ? 1 : 0;
    }
    return std::nullopt;
  }
  std::size_t depth = 0;
  for (; at < text.size(); ++at) {
    if (isEscape(text, at)) {
      ++at;
    } else if (text[at] == '(') {
      if (++depth > deepestParentheses) {
        return std::nullopt;
      }
    } else if (text[at] == ')') {
      if (depth == 0) {
        break;
      }
      --depth;
    } else if (ascii::isSpace(text[at])) {
      break;
    }
  }
  return text.substr(begin, at - begin);
}

/// Behind the title that begins at `at`; `at` itself where there is none.
std::size_t titleEnd(std::string_view text, std::size_t at) {
  const auto begin = at;
  if (at == text.size() || (text[at] != '"' && text[at] != '\'' && text[at] != '(')) {
    return begin;
  }
  const bool isParenthesized = text[at] == '(';
  const char close = isParenthesized ? ')' : text[at];
  // A mark behind a backslash ends the title all the same when no other does.
  auto end = begin;
  for (++at; at < text.size(); ++at) {
    if (isEscape(text, at)) {
      ++at;
      if (text[at] == close) {
        end = at + 1;
      }
    } else if (text[at] == close) {
      return at + 1;
    } else if (isParenthesized && text[at] == '(') {
      break;
    }
  }
  return end;
}

}  // namespace

CharacterClass classOf(char32_t c) {
  if (c < 0x80) {
    if (c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r') {
      return CharacterClass::Space;
    }
    return isASCIIPunctuation(static_cast<char>(c)) ? CharacterClass::Punctuation : CharacterClass::Other;
  }
  switch (utf8proc_category(static_cast<utf8proc_int32_t>(c))) {
    case UTF8PROC_CATEGORY_ZS:
      return CharacterClass::Space;
    case UTF8PROC_CATEGORY_PC:
    case UTF8PROC_CATEGORY_PD:
    case UTF8PROC_CATEGORY_PS:
    case UTF8PROC_CATEGORY_PE:
    case UTF8PROC_CATEGORY_PI:
    case UTF8PROC_CATEGORY_PF:
    case UTF8PROC_CATEGORY_PO:
      return CharacterClass::Punctuation;
    default:
      return CharacterClass::Other;
  }
}

Flanking flanking(char delimiter, CharacterClass before, CharacterClass after) {
  using enum CharacterClass;
  const bool left = after != Space && (after != Punctuation || before != Other);
  const bool right = before != Space && (before != Punctuation || after != Other);
  if (delimiter == '_') {
    return {left && (!right || before == Punctuation), right && (!left || after == Punctuation)};
  }
  return {left, right};
}

std::string_view scanURIAutolink(std::string_view text, std::size_t offset) {
  const auto begin = offset + 1;
  if (begin == text.size() || !ascii::isLetter(text[begin])) {
    return {};
  }
  const auto colon = skipWhile(
      text, begin, [](char c) { return ascii::isAlphanumeric(c) || c == '.' || c == '+' || c == '-'; });
  if (!isAt(text, colon, ':') || colon - begin < 2 || colon - begin > longestScheme) {
    return {};
  }
  const auto end =
      skipWhile(text, colon, [](char c) { return !isControlOrSpace(c) && c != '<' && c != '>'; });
  return isAt(text, end, '>') ? text.substr(begin, end - begin) : std::string_view();
}

std::string_view scanEmailAutolink(std::string_view text, std::size_t offset) {
  const auto begin = offset + 1;
  auto at = skipWhile(text, begin, [](char c) {
    return ascii::isAlphanumeric(c) ||
           std::string_view(".!#$%&'*+/=?^_`{|}~-").find(c) != std::string_view::npos;
  });
  if (at == begin || !isAt(text, at, '@')) {
    return {};
  }
  do {
    const auto label = at + 1;
    at = domainLabelEnd(text, label);
    if (at == label) {
      return {};
    }
  } while (isAt(text, at, '.'));
  return isAt(text, at, '>') ? text.substr(begin, at - begin) : std::string_view();
}

std::optional<LinkTarget> scanLinkTarget(std::string_view text, std::size_t offset) {
  if (!isAt(text, offset, '(')) {
    return std::nullopt;
  }
  const auto begin = skipWhile(text, offset + 1, ascii::isSpace);
  const auto destination = scanDestination(text, begin);
  if (!destination) {
    return std::nullopt;
  }
  auto end = begin + destination->size();
  const auto title = skipWhile(text, end, ascii::isSpace);
  if (title > end) {
    end = skipWhile(text, titleEnd(text, title), ascii::isSpace);
  }
  if (!isAt(text, end, ')')) {
    return std::nullopt;
  }
  const bool isBracketed = destination->starts_with('<');
  return LinkTarget{isBracketed ? destination->substr(1, destination->size() - 2) : *destination, end + 1};
}

std::size_t HTMLScanner::Terminator::endAfter(std::string_view text, std::size_t from) {
  if (isAbsent_) {
    return 0;
  }
  const auto found = text.find(mark_, from);
  isAbsent_ = found == std::string_view::npos;
  return isAbsent_ ? 0 : found + mark_.size();
}

std::size_t HTMLScanner::scan(std::size_t offset) {
  const auto rest = text_.substr(offset);
  std::size_t end = 0;
  if (rest.starts_with("<!--")) {
    end = commentEnd(offset + 4);
  } else if (rest.starts_with("<![CDATA[")) {
    end = cdata_.endAfter(text_, offset + 9);
  } else if (rest.starts_with("<!")) {
    end = declarationEnd(offset + 2);
  } else if (rest.starts_with("<?")) {
    end = instruction_.endAfter(text_, offset + 2);
  } else if (rest.starts_with("</")) {
    end = closingTagEnd(offset + 2);
  } else {
    end = openTagEnd(offset + 1);
  }
  return end > 0 ? end - offset : 0;
}

std::size_t HTMLScanner::openTagEnd(std::size_t at) const {
  if (at == text_.size() || !ascii::isLetter(text_[at])) {
    return 0;
  }
  at = skipWhile(text_, at, [](char c) { return ascii::isAlphanumeric(c) || c == '-'; });
  for (auto next = attributeEnd(at); next > at; next = attributeEnd(at)) {
    at = next;
  }
  at = skipWhile(text_, at, ascii::isSpace);
  at += isAt(text_, at, '/') ? 1 : 0;
  return isAt(text_, at, '>') ? at + 1 : 0;
}

std::size_t HTMLScanner::closingTagEnd(std::size_t at) const {
  if (at == text_.size() || !ascii::isLetter(text_[at])) {
    return 0;
  }
  at = skipWhile(text_, at, [](char c) { return ascii::isAlphanumeric(c) || c == '-'; });
  at = skipWhile(text_, at, ascii::isSpace);
  return isAt(text_, at, '>') ? at + 1 : 0;
}

std::size_t HTMLScanner::commentEnd(std::size_t at) const {
  // A comment's text neither begins with ">" or "->" nor has "--" in it, so the first "--" decides.
  const auto rest = text_.substr(at);
  if (rest.starts_with("-->")) {
    return at + 3;
  }
  if (rest.starts_with('>') || rest.starts_with("->")) {
    return 0;
  }
  const auto dashes = rest.find("--");
  return dashes != std::string_view::npos && dashes > 0 && isAt(rest, dashes + 2, '>') ? at + dashes + 3 : 0;
}

std::size_t HTMLScanner::declarationEnd(std::size_t at) {
  const auto name = skipWhile(text_, at, [](char c) { return c >= 'A' && c <= 'Z'; });
  if (name == at || name == text_.size() || !ascii::isSpace(text_[name])) {
    return 0;
  }
  return declaration_.endAfter(text_, name);
}

/// Behind the attribute (and the white space it needs in front) at `at`; `at` itself where there is none.
std::size_t HTMLScanner::attributeEnd(std::size_t at) const {
  const auto name = skipWhile(text_, at, ascii::isSpace);
  if (name == at || name == text_.size() ||
      !(ascii::isLetter(text_[name]) || text_[name] == '_' || text_[name] == ':')) {
    return at;
  }
  const auto end = skipWhile(text_, name, [](char c) {
    return ascii::isAlphanumeric(c) || c == '_' || c == ':' || c == '.' || c == '-';
  });
  const auto equals = skipWhile(text_, end, ascii::isSpace);
  if (!isAt(text_, equals, '=')) {
    return end;
  }
  const auto value = skipWhile(text_, equals + 1, ascii::isSpace);
  const auto valueEnd = attributeValueEnd(value);
  return valueEnd > value ? valueEnd : end;
}

std::size_t HTMLScanner::attributeValueEnd(std::size_t at) const {
  if (at == text_.size()) {
    return at;
  }
  if (text_[at] == '"' || text_[at] == '\'') {
    const auto quote = text_.find(text_[at], at + 1);
    return quote == std::string_view::npos ? at : quote + 1;
  }
  return skipWhile(text_, at, [](char c) {
    return !ascii::isSpace(c) && std::string_view("\"'=<>`").find(c) == std::string_view::npos;
  });
}

}  // namespace lumiwren
