#include "markdown/MarkdownParser.h"

#include "base/Unicode.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace lumiwren {

namespace {

using unicode::trimHorizontalSpace;

constexpr std::string_view fence = "```";

/// Whether `line` matches ^[\|\s]*:?-+:?[\|\s:-]*$. The sets allow one way to match only, so one pass
/// decides.
bool isSeparator(std::string_view line) {
  std::size_t at = 0;
  const auto skip = [&](auto isMark) {
    while (at < line.size()) {
      const auto byte = static_cast<unsigned char>(line[at]);
      if (byte < 0x80) {
        if (!isMark(line[at]) && !unicode::isWhitespace(byte)) {
          return;
        }
        ++at;
      } else if (const auto point = unicode::decodeAt(line, at);
                 point && unicode::isWhitespace(point->value)) {
        at += point->length;
      } else {
        return;
      }
    }
  };
  skip([](char c) { return c == '|'; });
  if (at < line.size() && line[at] == ':') {
    ++at;
  }
  if (at == line.size() || line[at] != '-') {
    return false;
  }
  skip([](char c) { return c == '-' || c == '|' || c == ':'; });
  return at == line.size();
}

bool isSeparatorTrimmed(std::string_view line) {
  return isSeparator(trimHorizontalSpace(line));
}

bool hasBar(std::string_view line) {
  return line.find('|') != std::string_view::npos;
}

/// The length of what matches ^\d+\. in front of a numbered item, its space included; 0 where nothing does.
std::size_t numberedMarker(std::string_view line) {
  std::size_t at = 0;
  while (const auto point = unicode::decodeAt(line, at)) {
    if (!unicode::isDecimalDigit(point->value)) {
      break;
    }
    at += point->length;
  }
  return at > 0 && line.substr(at, 2) == ". " ? at + 2 : 0;
}

std::size_t bulletMarker(std::string_view line) {
  return line.starts_with("- ") || line.starts_with("* ") ? 2 : 0;
}

/// Walks over the lines of a text, each of which is looked for once.
class Lines {
public:
  explicit Lines(std::string_view text) : text_(text), end_(endFrom(0)) {}

  [[nodiscard]] bool atEnd() const { return begin_ > text_.size(); }
  [[nodiscard]] std::string_view line() const { return text_.substr(begin_, end_ - begin_); }
  [[nodiscard]] std::size_t begin() const { return begin_; }
  [[nodiscard]] std::size_t end() const { return end_; }
  [[nodiscard]] bool hasNext() const { return end_ < text_.size(); }
  [[nodiscard]] std::string_view next() const {
    return text_.substr(end_ + 1, endFrom(end_ + 1) - (end_ + 1));
  }
  [[nodiscard]] std::string_view between(std::size_t begin, std::size_t end) const {
    return text_.substr(begin, end - begin);
  }

  void advance() {
    const bool isLast = !hasNext();
    begin_ = end_ + 1;
    end_ = isLast ? begin_ : endFrom(begin_);
  }

private:
  [[nodiscard]] std::size_t endFrom(std::size_t begin) const {
    return std::min(text_.find('\n', begin), text_.size());
  }

  std::string_view text_;
  std::size_t begin_ = 0;
  std::size_t end_;
};

class BlockParser {
public:
  explicit BlockParser(std::vector<MarkdownBlock> &blocks) : blocks_(blocks) {}

  void parse(std::string_view text) {
    Lines lines(text);
    while (!lines.atEnd()) {
      parseBlock(lines);
    }
  }

private:
  void parseBlock(Lines &lines) {
    const auto raw = lines.line();
    if (hasBar(raw) && lines.hasNext() && isSeparatorTrimmed(lines.next()) && !isSeparatorTrimmed(raw)) {
      return collectTable(lines);
    }
    const auto trimmed = trimHorizontalSpace(raw);
    if (trimmed.starts_with(fence)) {
      return collectFence(lines, trimmed.substr(fence.size()));
    }
    if (trimmed.empty()) {
      return lines.advance();
    }
    if (raw.starts_with("# ")) {
      append(lines, MarkdownHeading{1, raw.substr(2)});
    } else if (raw.starts_with("## ")) {
      append(lines, MarkdownHeading{2, raw.substr(3)});
    } else if (raw.starts_with("### ")) {
      append(lines, MarkdownHeading{3, raw.substr(4)});
    } else if (bulletMarker(raw) > 0) {
      blocks_.emplace_back(MarkdownBulletList{collectItems(lines, bulletMarker)});
    } else if (numberedMarker(raw) > 0) {
      blocks_.emplace_back(MarkdownNumberedList{collectItems(lines, numberedMarker)});
    } else {
      append(lines, MarkdownParagraph{raw});
    }
  }

  template <typename Block>
  void append(Lines &lines, const Block &block) {
    blocks_.emplace_back(block);
    lines.advance();
  }

  template <typename Marker>
  std::vector<std::string_view> collectItems(Lines &lines, Marker marker) {
    collected_.clear();
    for (; !lines.atEnd(); lines.advance()) {
      const auto length = marker(lines.line());
      if (length == 0) {
        break;
      }
      collected_.push_back(lines.line().substr(length));
    }
    return {collected_.begin(), collected_.end()};
  }

  void collectTable(Lines &lines) {
    collected_.clear();
    for (; !lines.atEnd() && (hasBar(lines.line()) || isSeparatorTrimmed(lines.line())); lines.advance()) {
      collected_.push_back(lines.line());
    }
    if (auto table = parseTable(collected_)) {
      blocks_.emplace_back(std::move(*table));
    }
  }

  void collectFence(Lines &lines, std::string_view label) {
    auto language = unicode::toLower(trimHorizontalSpace(label));
    lines.advance();
    const auto begin = lines.begin();
    auto end = begin;
    for (; !lines.atEnd() && !trimHorizontalSpace(lines.line()).starts_with(fence); lines.advance()) {
      end = lines.end();
    }
    const auto body = end > begin ? lines.between(begin, end) : std::string_view();
    if (!lines.atEnd()) {
      lines.advance();
    }
    if (language == "markdown" || language == "md") {
      // A body holds no fence, so this goes one level deep at most.
      parse(body);
    } else {
      blocks_.emplace_back(MarkdownCodeBlock{body, std::move(language)});
    }
  }

  std::vector<MarkdownBlock> &blocks_;
  /// The items or lines of the block at hand; kept for its memory.
  std::vector<std::string_view> collected_;
};

}  // namespace

std::vector<MarkdownBlock> parseMarkdownContent(std::string_view markdown) {
  std::vector<MarkdownBlock> blocks;
  // About as many as an answer of this length has.
  blocks.reserve(markdown.size() / 96 + 4);
  BlockParser(blocks).parse(markdown);
  return blocks;
}

std::optional<MarkdownTable> parseTable(std::span<const std::string_view> lines) {
  MarkdownTable table;
  bool hasHeaders = false;
  table.rows.reserve(lines.size());
  for (const auto &line : lines) {
    if (isSeparatorTrimmed(line)) {
      continue;
    }
    if (!hasHeaders) {
      table.headers = parseTableRow(line);
      hasHeaders = true;
    } else {
      table.rows.push_back(parseTableRow(line));
    }
  }
  if (!hasHeaders) {
    return std::nullopt;
  }
  table.columnCount = table.headers.size();
  return table;
}

std::vector<std::string_view> parseTableRow(std::string_view line) {
  auto rest = trimHorizontalSpace(line);
  if (rest.starts_with('|')) {
    rest.remove_prefix(1);
  }
  if (rest.ends_with('|')) {
    rest.remove_suffix(1);
  }
  std::vector<std::string_view> cells;
  cells.reserve(static_cast<std::size_t>(std::count(rest.begin(), rest.end(), '|')) + 1);
  for (;;) {
    const auto bar = rest.find('|');
    cells.push_back(rest.substr(0, bar));
    if (bar == std::string_view::npos) {
      return cells;
    }
    rest.remove_prefix(bar + 1);
  }
}

}  // namespace lumiwren
