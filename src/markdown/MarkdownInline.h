#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// A set of inline styles.
enum class MarkdownStyle : std::uint8_t {
  Plain = 0,
  Emphasis = 1,
  Strong = 2,
  Strikethrough = 4,
  Code = 8,
  /// The text stands for an image, which is never fetched: it is the image's alternative text.
  Image = 16,
};

constexpr MarkdownStyle operator|(MarkdownStyle a, MarkdownStyle b) {
  return static_cast<MarkdownStyle>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
constexpr bool contains(MarkdownStyle set, MarkdownStyle style) {
  return (static_cast<unsigned>(set) & static_cast<unsigned>(style)) == static_cast<unsigned>(style);
}

/// A stretch of text in one style.
struct MarkdownRun {
  static constexpr int noLink = -1;

  /// In bytes of MarkdownInlineText::text; runs never cut a code point.
  std::size_t begin;
  std::size_t length;
  MarkdownStyle style = MarkdownStyle::Plain;
  /// Index into MarkdownInlineText::links, or noLink.
  int link = noLink;
  bool operator==(const MarkdownRun &) const = default;
};

/// A line with its inline Markdown applied.
struct MarkdownInlineText {
  /// What is shown, in UTF-8.
  std::string text;
  /// In order, without gaps, none empty; they cover the whole text. Neighbours differ in style or link.
  std::vector<MarkdownRun> runs;
  /// Destinations as written, escapes and character references resolved; never empty, of any scheme: whoever
  /// opens one decides which schemes are safe.
  std::vector<std::string> links;
  bool operator==(const MarkdownInlineText &) const = default;
};

/// Interprets one line as inline-only Markdown (CommonMark with strikethrough in one or two tildes) and keeps
/// all white space. Nothing at the start of a line has a meaning, HTML is literal text, a link needs its
/// destination in place, and syntax that is not balanced is text. Pure, on any thread, in time linear in the
/// line's length. Bytes that are no valid UTF-8 come out as they went in.
MarkdownInlineText parseInlineMarkdown(std::string_view line);

}  // namespace lumiwren
