#include "markdown/Describe.h"

namespace lumiwren::testing {

namespace {

std::string cell(std::string_view text) {
  return "(" + std::string(text) + ")";
}

std::string cells(const std::vector<std::string_view> &list) {
  std::string result;
  for (const auto &text : list) {
    result += cell(text);
  }
  return result;
}

struct Describer {
  std::string operator()(const MarkdownHeading &block) const {
    return "h" + std::to_string(block.level) + cell(block.text);
  }
  std::string operator()(const MarkdownParagraph &block) const { return "p" + cell(block.text); }
  std::string operator()(const MarkdownCodeBlock &block) const {
    return "code[" + block.language + "]" + cell(block.code);
  }
  std::string operator()(const MarkdownBulletList &block) const { return "bullets" + cells(block.items); }
  std::string operator()(const MarkdownNumberedList &block) const { return "numbers" + cells(block.items); }
  std::string operator()(const MarkdownTable &block) const {
    auto result = "table" + std::to_string(block.columnCount) + cells(block.headers);
    for (const auto &row : block.rows) {
      result += ";" + cells(row);
    }
    return result;
  }
};

}  // namespace

std::string describe(const std::vector<MarkdownBlock> &blocks) {
  std::string result;
  for (const auto &block : blocks) {
    result += std::visit(Describer(), block) + "\n";
  }
  return result;
}

std::string describe(const MarkdownInlineText &text) {
  constexpr std::pair<MarkdownStyle, char> letters[] = {{MarkdownStyle::Emphasis, 'E'},
                                                        {MarkdownStyle::Strong, 'S'},
                                                        {MarkdownStyle::Strikethrough, 'K'},
                                                        {MarkdownStyle::Code, 'C'},
                                                        {MarkdownStyle::Image, 'I'}};
  std::string result;
  for (const auto &run : text.runs) {
    for (const auto &[style, letter] : letters) {
      if (contains(run.style, style)) {
        result += letter;
      }
    }
    result += cell(std::string_view(text.text).substr(run.begin, run.length));
    if (run.link != MarkdownRun::noLink) {
      result += "<" + text.links[static_cast<std::size_t>(run.link)] + ">";
    }
  }
  return result;
}

}  // namespace lumiwren::testing
