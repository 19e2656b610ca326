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

/// The length of the white space character (in the sense of \s) at `offset`, 0 where there is none.
std::size_t whitespaceAt(std::string_view text, std::size_t offset) {
  const auto byte = static_cast<unsigned char>(text[offset]);
  if (byte < 0x80) {
    return unicode::isWhitespace(byte) ? 1 : 0;
  }
  const auto point = unicode::decodeAt(text, offset);
  return point && unicode::isWhitespace(point->value) ? point->length : 0;
}

/// Whether `line` matches ^[\|\s]*:?-+:?[\|\s:-]*$. The sets allow one way to match only, so one pass
/// decides.
bool isSeparator(std::string_view line) {
  std::size_t at = 0;
  const auto skip = [&](std::string_view set) {
    while (at < line.size()) {
      const auto length = set.find(line[at]) != std::string_view::npos ? 1 : whitespaceAt(line, at);
      if (length == 0) {
        return;
      }
      at += length;
    }
  };
  skip("|");
  if (at < line.size() && line[at] == ':') {
    ++at;
  }
  if (at == line.size() || line[at] != '-') {
    return false;
  }
  skip("|:-");
  return at == line.size();
}

bool isSeparatorTrimmed(std::string_view line) {
  return isSeparator(trimHorizontalSpace(line));
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

class BlockParser {
public:
  BlockParser(std::string_view text, std::vector<MarkdownBlock> &blocks)
      : text_(text), lineEnd_(std::min(text.find('\n'), text.size())), blocks_(blocks) {}

  void run() {
    while (!atEnd_) {
      parseBlock();
    }
  }

private:
  [[nodiscard]] std::string_view line() const { return text_.substr(lineBegin_, lineEnd_ - lineBegin_); }

  [[nodiscard]] bool hasNextLine() const { return lineEnd_ < text_.size(); }

  [[nodiscard]] std::string_view nextLine() const {
    const auto begin = lineEnd_ + 1;
    return text_.substr(begin, std::min(text_.find('\n', begin), text_.size()) - begin);
  }

  void advance() {
    if (!hasNextLine()) {
      atEnd_ = true;
      return;
    }
    lineBegin_ = lineEnd_ + 1;
    lineEnd_ = std::min(text_.find('\n', lineBegin_), text_.size());
  }

  void parseBlock() {
    const auto raw = line();
    const auto trimmed = trimHorizontalSpace(raw);
    if (trimmed.find('|') != std::string_view::npos && hasNextLine() && !isSeparator(trimmed) &&
        isSeparatorTrimmed(nextLine())) {
      collectTable();
    } else if (trimmed.starts_with(fence)) {
      collectFence(trimmed.substr(fence.size()));
    } else if (raw.starts_with("# ")) {
      append(MarkdownHeading{1, raw.substr(2)});
    } else if (raw.starts_with("## ")) {
      append(MarkdownHeading{2, raw.substr(3)});
    } else if (raw.starts_with("### ")) {
      append(MarkdownHeading{3, raw.substr(4)});
    } else if (bulletMarker(raw) > 0) {
      blocks_.emplace_back(MarkdownBulletList{collectItems(bulletMarker)});
    } else if (numberedMarker(raw) > 0) {
      blocks_.emplace_back(MarkdownNumberedList{collectItems(numberedMarker)});
    } else if (trimmed.empty()) {
      advance();
    } else {
      append(MarkdownParagraph{raw});
    }
  }

  template <typename Block>
  void append(Block block) {
    blocks_.emplace_back(std::move(block));
    advance();
  }

  template <typename Marker>
  std::vector<std::string_view> collectItems(Marker marker) {
    std::vector<std::string_view> items;
    while (!atEnd_) {
      const auto raw = line();
      const auto length = marker(raw);
      if (length == 0) {
        break;
      }
      items.push_back(raw.substr(length));
      advance();
    }
    return items;
  }

  void collectTable() {
    std::vector<std::string_view> lines;
    while (!atEnd_ && (line().find('|') != std::string_view::npos || isSeparatorTrimmed(line()))) {
      lines.push_back(line());
      advance();
    }
    if (auto table = parseTable(lines)) {
      blocks_.emplace_back(std::move(*table));
    }
  }

  void collectFence(std::string_view label) {
    auto language = unicode::toLower(trimHorizontalSpace(label));
    advance();
    const auto begin = lineBegin_;
    auto end = begin;
    bool isEmpty = true;
    while (!atEnd_ && !trimHorizontalSpace(line()).starts_with(fence)) {
      end = lineEnd_;
      isEmpty = false;
      advance();
    }
    const auto body = isEmpty ? std::string_view() : text_.substr(begin, end - begin);
    if (!atEnd_) {
      advance();
    }
    if (language == "markdown" || language == "md") {
      // A body holds no fence, so this goes one level deep at most.
      BlockParser(body, blocks_).run();
    } else {
      blocks_.emplace_back(MarkdownCodeBlock{body, std::move(language)});
    }
  }

  std::string_view text_;
  std::size_t lineBegin_ = 0;
  std::size_t lineEnd_;
  bool atEnd_ = false;
  std::vector<MarkdownBlock> &blocks_;
};

}  // namespace

std::vector<MarkdownBlock> parseMarkdownContent(std::string_view markdown) {
  std::vector<MarkdownBlock> blocks;
  BlockParser(markdown, blocks).run();
  return blocks;
}

std::optional<MarkdownTable> parseTable(std::span<const std::string_view> lines) {
  MarkdownTable table;
  bool hasHeaders = false;
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
