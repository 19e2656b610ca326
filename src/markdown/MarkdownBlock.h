#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace lumiwren {

// What an answer consists of. Every string_view points into the text that was parsed: whoever holds blocks
// keeps that text alive and unchanged (MarkdownDocument does). Blocks are plain values; comparing two costs
// no more than comparing the bytes they stand for, which is how a view finds what a streamed fragment
// changed.

/// The user-interface font in a size of points.
struct MarkdownFont {
  enum class Weight { Regular, Semibold, Bold };
  int size;
  Weight weight;
  bool operator==(const MarkdownFont &) const = default;
};

/// The primary foreground colour at an opacity from 0 to 1.
struct MarkdownColor {
  double opacity;
  bool operator==(const MarkdownColor &) const = default;
};

struct MarkdownHeading {
  /// 1, 2 or 3.
  int level;
  /// Shown verbatim: inline Markdown is not interpreted in headings.
  std::string_view text;

  [[nodiscard]] constexpr MarkdownFont font() const {
    return level == 1   ? MarkdownFont{17, MarkdownFont::Weight::Bold}
           : level == 2 ? MarkdownFont{15, MarkdownFont::Weight::Bold}
                        : MarkdownFont{14, MarkdownFont::Weight::Semibold};
  }
  bool operator==(const MarkdownHeading &) const = default;
};

/// One line of text.
struct MarkdownParagraph {
  static constexpr MarkdownFont font{13, MarkdownFont::Weight::Regular};

  /// Raw Markdown. What is shown is parseInlineMarkdown(text); it depends on nothing else, so it is left to
  /// the view, which needs it only for the few paragraphs that changed.
  std::string_view text;
  bool operator==(const MarkdownParagraph &) const = default;
};

struct MarkdownCodeBlock {
  /// Languages that get no label.
  static constexpr std::array<std::string_view, 6> hiddenLanguages{"markdown", "md",        "text",
                                                                   "txt",      "plaintext", ""};

  /// Without a line feed at its end.
  std::string_view code;
  /// In lower case; may be empty.
  std::string language;
  bool operator==(const MarkdownCodeBlock &) const = default;
};

struct MarkdownBulletList {
  /// Raw Markdown, shown as parseInlineMarkdown gives it.
  std::vector<std::string_view> items;
  bool operator==(const MarkdownBulletList &) const = default;
};

/// Numbered from 1 by position: the numbers of the source are not kept.
struct MarkdownNumberedList {
  /// Raw Markdown, shown as parseInlineMarkdown gives it.
  std::vector<std::string_view> items;
  bool operator==(const MarkdownNumberedList &) const = default;
};

/// Cells are verbatim and not trimmed. Rows may be shorter or longer than `columnCount`.
struct MarkdownTable {
  static constexpr MarkdownColor borderColor{0.3};

  std::vector<std::string_view> headers;
  std::vector<std::vector<std::string_view>> rows;
  std::size_t columnCount = 0;
  bool operator==(const MarkdownTable &) const = default;
};

/// A block's identity is its position in the list of blocks.
using MarkdownBlock = std::variant<MarkdownHeading, MarkdownParagraph, MarkdownCodeBlock, MarkdownBulletList,
                                   MarkdownNumberedList, MarkdownTable>;

}  // namespace lumiwren
