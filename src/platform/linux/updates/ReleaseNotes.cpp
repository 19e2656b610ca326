#include "platform/linux/updates/ReleaseNotes.h"

#include "base/ASCII.h"
#include "base/HTMLEntities.h"
#include "base/Unicode.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::size_t longestNotes = 100'000;
constexpr char32_t noCharacter = U'\ufffd';  // what numbers that name none stand for

constexpr std::array<std::string_view, 24> ownLines{
    "address", "article", "blockquote", "br", "dd", "div", "dl",  "dt",      "h1",    "h2", "h3", "h4",
    "h5",      "h6",      "hr",         "li", "ol", "p",   "pre", "section", "table", "tr", "ul", "header"};
constexpr std::array<std::string_view, 7> paragraphs{"h1", "h2", "h3", "h4", "h5", "h6", "p"};
constexpr std::array<std::string_view, 4> unseen{"script", "style", "head", "title"};

template <typename List>
bool holds(const List &list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

/// What a reference at the front of `text` stands for, where that can be shown; takes the reference off.
std::optional<std::string> takeReference(std::string_view &text) {
  std::string character;
  const std::size_t length = appendCharacterReference(text, 0, character);
  const auto first = unicode::decodeAt(character, 0);
  const bool isShown = first && first->value != noCharacter &&
                       (first->value >= 0x20 || first->value == '\t' || first->value == '\n');
  if (!isShown) {
    return std::nullopt;
  }
  text.remove_prefix(length);
  return character;
}

/// Whether a tag, comment or declaration begins here, rather than "1 < 2".
bool beginsTag(std::string_view text) {
  if (text.size() < 2 || text[0] != '<') {
    return false;
  }
  return ascii::isLetter(text[1]) || text[1] == '!' || text[1] == '?' ||
         (text[1] == '/' && text.size() > 2 && ascii::isLetter(text[2]));
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
  while (at < text.size() && ascii::isAlphanumeric(text[at])) {
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
    if (joinsSpace_ && character.size() == 1 && ascii::isSpace(character.front())) {
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
  bool isFull() const { return text_.size() >= longestNotes; }
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
