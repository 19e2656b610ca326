#include "markdown/ReferenceEmphasis.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

namespace lumiwren::testing {

namespace {

/// A piece of text that is no delimiter, or a run of delimiters.
struct Item {
  std::string text;
  bool isDelimiter;
  bool canOpen = false;
  bool canClose = false;
  bool isRemoved = false;
  std::size_t length = 0;
};

struct Span {
  std::size_t opener;
  std::size_t closer;
  char style;
};

bool isDelimiter(char c) {
  return c == '*' || c == '_' || c == '~';
}

std::vector<Item> split(std::string_view line) {
  std::vector<Item> items;
  for (std::size_t i = 0; i < line.size();) {
    auto end = i + 1;
    if (isDelimiter(line[i])) {
      end = std::min(line.find_first_not_of(line[i], i), line.size());
    } else {
      while (end < line.size() && (static_cast<unsigned char>(line[end]) & 0xC0) == 0x80) {
        ++end;
      }
    }
    items.push_back({std::string(line.substr(i, end - i)), isDelimiter(line[i])});
    items.back().length = end - i;
    i = end;
  }
  return items;
}

void setFlanking(std::vector<Item> &items, std::size_t i) {
  auto &item = items[i];
  const char delimiter = item.text[0];
  // Emphasis looks through strikethrough, not the other way round.
  const auto neighbour = [&](std::ptrdiff_t step) -> std::string {
    auto at = static_cast<std::ptrdiff_t>(i) + step;
    const auto size = static_cast<std::ptrdiff_t>(items.size());
    while (delimiter != '~' && at >= 0 && at < size && items[static_cast<std::size_t>(at)].text[0] == '~') {
      at += step;
    }
    return at < 0 || at >= size ? " " : items[static_cast<std::size_t>(at)].text;
  };
  const auto before = neighbour(-1);
  const auto after = neighbour(1);
  const auto isSpace = [](const std::string &text) { return text == " "; };
  const auto isPunctuation = [](const std::string &text) { return isDelimiter(text[0]) || text == "\u201C"; };
  const bool left = !isSpace(after) && (!isPunctuation(after) || isSpace(before) || isPunctuation(before));
  const bool right = !isSpace(before) && (!isPunctuation(before) || isSpace(after) || isPunctuation(after));
  item.canOpen = left && (delimiter != '_' || !right || isPunctuation(before));
  item.canClose = right && (delimiter != '_' || !left || isPunctuation(after));
  if (delimiter == '~' && item.length > 2) {
    item.canOpen = item.canClose = false;
  }
}

std::ptrdiff_t findOpener(const std::vector<Item> &items, std::size_t closer) {
  const auto &closing = items[closer];
  for (auto i = static_cast<std::ptrdiff_t>(closer) - 1; i >= 0; --i) {
    const auto &opening = items[static_cast<std::size_t>(i)];
    if (!opening.isDelimiter || opening.isRemoved || !opening.canOpen || opening.text.empty() ||
        opening.text[0] != closing.text[0]) {
      continue;
    }
    const bool eitherDoesBoth =
        (closing.canOpen && closing.canClose) || (opening.canOpen && opening.canClose);
    const bool isMultipleOfThree = (opening.length + closing.length) % 3 == 0;
    const bool bothMultiplesOfThree = opening.length % 3 == 0 && closing.length % 3 == 0;
    if (!eitherDoesBoth || !isMultipleOfThree || bothMultiplesOfThree) {
      return i;
    }
  }
  return -1;
}

std::vector<Span> match(std::vector<Item> &items) {
  std::vector<Span> spans;
  for (std::size_t closer = 0; closer < items.size(); ++closer) {
    auto &closing = items[closer];
    while (closing.isDelimiter && closing.canClose && !closing.text.empty()) {
      const auto found = findOpener(items, closer);
      if (found < 0) {
        break;
      }
      const auto opener = static_cast<std::size_t>(found);
      auto &opening = items[opener];
      const bool isTilde = closing.text[0] == '~';
      if (isTilde && opening.length != closing.length) {
        break;
      }
      const std::size_t used = isTilde                                                ? closing.length
                               : closing.text.size() >= 2 && opening.text.size() >= 2 ? 2
                                                                                      : 1;
      opening.text.resize(opening.text.size() - used);
      closing.text.resize(closing.text.size() - used);
      spans.push_back({opener, closer, isTilde ? 'K' : used == 2 ? 'S' : 'E'});
      for (auto i = opener + 1; i < closer; ++i) {
        items[i].isRemoved = true;
      }
    }
  }
  return spans;
}

}  // namespace

std::string describeEmphasisSlowly(std::string_view line) {
  auto items = split(line);
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i].isDelimiter) {
      setFlanking(items, i);
    }
  }
  const auto spans = match(items);
  std::string result;
  std::string lastStyle = "none";
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i].text.empty()) {
      continue;
    }
    std::string style;
    for (const char letter : {'E', 'S', 'K'}) {
      if (std::any_of(spans.begin(), spans.end(), [&](const Span &span) {
            return span.style == letter && span.opener < i && i < span.closer;
          })) {
        style += letter;
      }
    }
    if (style != lastStyle) {
      result += (result.empty() ? "" : ")") + style + "(";
      lastStyle = style;
    }
    result += items[i].text;
  }
  return result.empty() ? result : result + ")";
}

}  // namespace lumiwren::testing
