#include "markdown/ReferenceParser.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <vector>

namespace lumiwren::testing {

namespace {

using Line = std::u32string;
using Lines = std::vector<Line>;
using Set = std::function<bool(char32_t)>;

bool isSpaceSeparator(char32_t c) {
  return c == ' ' || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}
bool isTrimmed(char32_t c) {
  return c == '\t' || isSpaceSeparator(c);
}
bool isWhitespace(char32_t c) {
  return isSpaceSeparator(c) || (c >= 9 && c <= 13) || c == 0x85 || c == 0x2028 || c == 0x2029;
}
bool isDigit(char32_t c) {
  return (c >= '0' && c <= '9') || c == 0x663 || c == 0xFF13;
}

/// One element of a pattern: between `least` and `most` characters of a set.
struct Element {
  Set set;
  std::size_t least;
  std::size_t most;
};
constexpr auto any = std::numeric_limits<std::size_t>::max();

Set oneOf(std::u32string characters, bool orWhitespace = false) {
  return [=](char32_t c) {
    return characters.find(c) != std::u32string::npos || (orWhitespace && isWhitespace(c));
  };
}

/// The end of a match of pattern[element...] that begins at `at`; npos where there is none. Longest counts
/// first.
std::size_t matchEnd(const std::vector<Element> &pattern, std::size_t element, const Line &line,
                     std::size_t at, bool toTheEnd) {
  if (element == pattern.size()) {
    return toTheEnd && at != line.size() ? Line::npos : at;
  }
  std::size_t count = 0;
  while (count < pattern[element].most && at + count < line.size() &&
         pattern[element].set(line[at + count])) {
    ++count;
  }
  for (auto taken = count + 1; taken-- > pattern[element].least;) {
    const auto end = matchEnd(pattern, element + 1, line, at + taken, toTheEnd);
    if (end != Line::npos) {
      return end;
    }
  }
  return Line::npos;
}

bool isSeparator(const Line &line) {
  static const std::vector<Element> pattern{{oneOf(U"|", true), 0, any},
                                            {oneOf(U":"), 0, 1},
                                            {oneOf(U"-"), 1, any},
                                            {oneOf(U":"), 0, 1},
                                            {oneOf(U"|:-", true), 0, any}};
  return matchEnd(pattern, 0, line, 0, true) != Line::npos;
}

std::size_t numberedMarker(const Line &line) {
  static const std::vector<Element> pattern{{isDigit, 1, any}, {oneOf(U"."), 1, 1}, {oneOf(U" "), 1, 1}};
  return matchEnd(pattern, 0, line, 0, false);
}

Line trimmed(Line line) {
  while (!line.empty() && isTrimmed(line.front())) {
    line.erase(line.begin());
  }
  while (!line.empty() && isTrimmed(line.back())) {
    line.pop_back();
  }
  return line;
}

bool contains(const Line &line, char32_t c) {
  return line.find(c) != Line::npos;
}

Lines split(const Line &text, char32_t at) {
  Lines parts(1);
  for (const auto c : text) {
    if (c == at) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

Line decode(std::string_view text) {
  Line result;
  for (std::size_t i = 0; i < text.size();) {
    const auto first = static_cast<unsigned char>(text[i++]);
    const int more = first < 0x80 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    char32_t value = more == 0 ? first : first & (0x3FU >> more);
    for (int k = 0; k < more; ++k) {
      value = (value << 6) | (static_cast<unsigned char>(text[i++]) & 0x3FU);
    }
    result += value;
  }
  return result;
}

std::string encode(const Line &line) {
  std::string result;
  const auto add = [&](char32_t byte) { result += static_cast<char>(static_cast<unsigned char>(byte)); };
  for (const auto c : line) {
    if (c < 0x80) {
      add(c);
    } else if (c < 0x800) {
      add(0xC0 | (c >> 6));
      add(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      add(0xE0 | (c >> 12));
      add(0x80 | ((c >> 6) & 0x3F));
      add(0x80 | (c & 0x3F));
    } else {
      add(0xF0 | (c >> 18));
      add(0x80 | ((c >> 12) & 0x3F));
      add(0x80 | ((c >> 6) & 0x3F));
      add(0x80 | (c & 0x3F));
    }
  }
  return result;
}

std::string cell(const Line &text) {
  return "(" + encode(text) + ")";
}

std::string row(Line line, std::size_t *count = nullptr) {
  line = trimmed(line);
  if (line.starts_with(U'|')) {
    line.erase(line.begin());
  }
  if (line.ends_with(U'|')) {
    line.pop_back();
  }
  std::string result;
  const auto cells = split(line, U'|');
  for (const auto &text : cells) {
    result += cell(text);
  }
  if (count != nullptr) {
    *count = cells.size();
  }
  return result;
}

std::string table(const Lines &collected) {
  Lines lines;
  std::copy_if(collected.begin(), collected.end(), std::back_inserter(lines),
               [](const Line &line) { return !isSeparator(trimmed(line)); });
  if (lines.empty()) {
    return {};
  }
  std::size_t columns = 0;
  const auto headers = row(lines[0], &columns);
  auto result = "table" + std::to_string(columns) + headers;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    result += ";" + row(lines[i]);
  }
  return result + "\n";
}

Line lowerCase(Line line) {
  for (auto &c : line) {
    if (c >= 'A' && c <= 'Z') {
      c += 'a' - 'A';
    }
  }
  return line;
}

std::string blocks(const Line &text) {
  const auto lines = split(text, U'\n');
  std::string result;
  std::size_t i = 0;
  while (i < lines.size()) {
    const auto &raw = lines[i];
    const auto trim = trimmed(raw);
    const auto isBullet = [](const Line &line) { return line.starts_with(U"- ") || line.starts_with(U"* "); };
    if (contains(trim, U'|') && !isSeparator(trim) && i + 1 < lines.size() &&
        isSeparator(trimmed(lines[i + 1]))) {
      Lines collected;
      for (; i < lines.size(); ++i) {
        const auto line = trimmed(lines[i]);
        if (!((contains(line, U'|') && !isSeparator(line)) || isSeparator(line))) {
          break;
        }
        collected.push_back(lines[i]);
      }
      result += table(collected);
    } else if (trim.starts_with(U"```")) {
      const auto language = encode(lowerCase(trimmed(trim.substr(3))));
      Line body;
      bool isFirst = true;
      for (++i; i < lines.size() && !trimmed(lines[i]).starts_with(U"```"); ++i) {
        body += (isFirst ? U"" : U"\n") + lines[i];
        isFirst = false;
      }
      ++i;
      result += language == "markdown" || language == "md" ? blocks(body)
                                                           : "code[" + language + "]" + cell(body) + "\n";
    } else if (raw.starts_with(U"# ")) {
      result += "h1" + cell(raw.substr(2)) + "\n";
      ++i;
    } else if (raw.starts_with(U"## ")) {
      result += "h2" + cell(raw.substr(3)) + "\n";
      ++i;
    } else if (raw.starts_with(U"### ")) {
      result += "h3" + cell(raw.substr(4)) + "\n";
      ++i;
    } else if (isBullet(raw)) {
      result += "bullets";
      for (; i < lines.size() && isBullet(lines[i]); ++i) {
        result += cell(lines[i].substr(2));
      }
      result += "\n";
    } else if (numberedMarker(raw) != Line::npos) {
      result += "numbers";
      for (; i < lines.size() && numberedMarker(lines[i]) != Line::npos; ++i) {
        result += cell(lines[i].substr(numberedMarker(lines[i])));
      }
      result += "\n";
    } else if (trim.empty()) {
      ++i;
    } else {
      result += "p" + cell(raw) + "\n";
      ++i;
    }
  }
  return result;
}

}  // namespace

std::string describeBlocksSlowly(std::string_view markdown) {
  return blocks(decode(markdown));
}

}  // namespace lumiwren::testing
