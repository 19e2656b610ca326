#include "markdown/MarkdownParser.h"

#include "markdown/Describe.h"
#include "markdown/MarkdownDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace lumiwren {
namespace {

std::string blocksOf(std::string_view markdown) {
  return testing::describe(parseMarkdownContent(markdown));
}

TEST(MarkdownParser, EmptyTextAndBlankLinesYieldNoBlocks) {
  EXPECT_EQ(blocksOf(""), "");
  EXPECT_EQ(blocksOf("\n\n"), "");
  EXPECT_EQ(blocksOf(" \t\n\u00A0\u3000\n"), "");
}

TEST(MarkdownParser, OnlyAHashAndASpaceAtTheVeryStartMakeAHeading) {
  EXPECT_EQ(blocksOf("# Title"), "h1(Title)\n");
  EXPECT_EQ(blocksOf("## Title\n### **x** "), "h2(Title)\nh3(**x** )\n");
  EXPECT_EQ(blocksOf("#Title\n # Title\n#### Title\n#\tTitle\n#"),
            "p(#Title)\np( # Title)\np(#### Title)\np(#\tTitle)\np(#)\n");
  EXPECT_EQ(blocksOf("# \n# #"), "h1()\nh1(#)\n");
}

TEST(MarkdownParser, HeadingAndParagraphFonts) {
  using Weight = MarkdownFont::Weight;
  EXPECT_EQ((MarkdownHeading{1, ""}.font()), (MarkdownFont{17, Weight::Bold}));
  EXPECT_EQ((MarkdownHeading{2, ""}.font()), (MarkdownFont{15, Weight::Bold}));
  EXPECT_EQ((MarkdownHeading{3, ""}.font()), (MarkdownFont{14, Weight::Semibold}));
  EXPECT_EQ(MarkdownParagraph::font, (MarkdownFont{13, Weight::Regular}));
  EXPECT_EQ(MarkdownTable::borderColor, (MarkdownColor{0.3}));
}

TEST(MarkdownParser, TableBetweenParagraphs) {
  EXPECT_EQ(blocksOf("Intro\n| a | b |\n|---|:-:|\n| 1 | 2 |\n\nAfter"),
            "p(Intro)\ntable2( a )( b );( 1 )( 2 )\np(After)\n");
}

TEST(MarkdownParser, TableHeaderIsAParagraphUntilItsSeparatorArrives) {
  EXPECT_EQ(blocksOf("| a | b |"), "p(| a | b |)\n");
  EXPECT_EQ(blocksOf("| a | b |\n"), "p(| a | b |)\n");
  EXPECT_EQ(blocksOf("| a | b |\n|"), "p(| a | b |)\np(|)\n");
  EXPECT_EQ(blocksOf("| a | b |\n|-"), "table2( a )( b )\n");
  EXPECT_EQ(blocksOf("| a | b |\n|---|---|"), "table2( a )( b )\n");
}

TEST(MarkdownParser, TableWithoutOuterBarsAndWithoutRows) {
  EXPECT_EQ(blocksOf("a | b\n---"), "table2(a )( b)\n");
  EXPECT_EQ(blocksOf("a|b\n-"), "table2(a)(b)\n");
}

TEST(MarkdownParser, TwoSeparatorsAreNoTable) {
  EXPECT_EQ(blocksOf("|---|\n|---|"), "p(|---|)\np(|---|)\n");
}

TEST(MarkdownParser, TableAbsorbsALineOfDashesBelowIt) {
  EXPECT_EQ(blocksOf("|a|\n|-|\n|1|\n---\n|2|\n-\nend"), "table1(a);(1);(2)\np(end)\n");
}

TEST(MarkdownParser, TableEndsAtALineWithoutBarAndRowsKeepTheirLength) {
  EXPECT_EQ(blocksOf("|a|b|\n|-|-|\n|1|\n|1|2|3|\n# x"), "table2(a)(b);(1);(1)(2)(3)\nh1(x)\n");
  EXPECT_EQ(blocksOf("  |a|\n\t|-|  \n   1|2"), "table1(a);(1)(2)\n");
}

TEST(MarkdownParser, TableHasPrecedenceOverEveryOtherBlock) {
  EXPECT_EQ(blocksOf("# a|b\n---"), "table2(# a)(b)\n");
  EXPECT_EQ(blocksOf("```a|b\n---\nx"), "table2(```a)(b)\np(x)\n");
  EXPECT_EQ(blocksOf("- a|b\n---"), "table2(- a)(b)\n");
  EXPECT_EQ(blocksOf("- a\n- b|c\n---"), "bullets(a)(b|c)\np(---)\n");
}

TEST(MarkdownParser, SeparatorPattern) {
  for (const auto *separator : {"-", "---", ":-", "-:", ":-:", "|-", " - - ", "|:--|--:|", "||  :-|", "---\r",
                                "|-|\u2003:|", "-|\u0085|", "-:::", "-\u2028", "- |"}) {
    EXPECT_EQ(blocksOf(std::string("a|b\n") + separator), "table2(a)(b)\n") << separator;
  }
  for (const auto *line : {"", ":", "::-", "|", "-x", "x-", ": -", "-\u00B7", "-=", "- \u200B", "\u2212"}) {
    EXPECT_EQ(blocksOf(std::string("a|b\n") + line).find("table"), std::string::npos) << line;
  }
}

TEST(MarkdownParser, AMillionDashesAndAnX) {
  const auto line = std::string(1'000'000, '-') + "x";
  const auto blocks = parseMarkdownContent("a|b\n" + line);
  EXPECT_EQ(blocks.size(), 2U);
}

TEST(MarkdownParser, OpenFenceShowsEverythingBehindItAsCode) {
  EXPECT_EQ(blocksOf("```json\na = 1\n"), "code[json](a = 1\n)\n");
  EXPECT_EQ(blocksOf("```"), "code[]()\n");
  EXPECT_EQ(blocksOf("```\n"), "code[]()\n");
  EXPECT_EQ(blocksOf("x\n```c\n# a\n| b |\n|---|"), "p(x)\ncode[c](# a\n| b |\n|---|)\n");
}

TEST(MarkdownParser, ClosedFenceWithoutLanguage) {
  EXPECT_EQ(blocksOf("```\ncode\n```"), "code[](code)\n");
  EXPECT_EQ(blocksOf("```\n```\nx"), "code[]()\np(x)\n");
  EXPECT_EQ(blocksOf("```\n\n\n```"), "code[](\n)\n");
}

TEST(MarkdownParser, FenceLanguageIsTrimmedAndLowerCase) {
  EXPECT_EQ(blocksOf("  ```JSON \n  x\n\t``` ignored\ny"), "code[json](  x)\np(y)\n");
  EXPECT_EQ(blocksOf("``` C++ \u00C4 \n```"), "code[c++ \u00E4]()\n");
  EXPECT_EQ(blocksOf("````x\n```"), "code[`x]()\n");
  EXPECT_EQ(blocksOf("```js\r\n1\r\n```\r\nx"), "code[js\r](1\r)\np(x)\n");
}

TEST(MarkdownParser, HiddenLanguagesAreTheSix) {
  auto hidden = MarkdownCodeBlock::hiddenLanguages;
  std::sort(hidden.begin(), hidden.end());
  EXPECT_EQ(hidden, (std::array<std::string_view, 6>{"", "markdown", "md", "plaintext", "text", "txt"}));
}

TEST(MarkdownParser, FenceOfMarkdownIsParsedInPlace) {
  EXPECT_EQ(blocksOf("```md\n# Inner\n- a\n```"), "h1(Inner)\nbullets(a)\n");
  EXPECT_EQ(blocksOf("- x\n```MarkDown\n- a\n```\n- y"), "bullets(x)\nbullets(a)\nbullets(y)\n");
  EXPECT_EQ(blocksOf("```md\n```\n```md\n\n"), "");
  EXPECT_EQ(blocksOf("```md\n|a|\n```\n---"), "p(|a|)\np(---)\n");
  EXPECT_EQ(blocksOf("```mdx\nx"), "code[mdx](x)\n");
}

TEST(MarkdownParser, BulletMarkersMayAlternateAndABlankLineSplits) {
  EXPECT_EQ(blocksOf("- a\n* b\n- c"), "bullets(a)(b)(c)\n");
  EXPECT_EQ(blocksOf("- a\n\n- b"), "bullets(a)\nbullets(b)\n");
  EXPECT_EQ(blocksOf("- \n- - x\n-x\n+ y"), "bullets()(- x)\np(-x)\np(+ y)\n");
}

TEST(MarkdownParser, ListsDoNotNest) {
  EXPECT_EQ(blocksOf("- a\n  - b\n- c"), "bullets(a)\np(  - b)\nbullets(c)\n");
}

TEST(MarkdownParser, NumberedListDropsTheNumbers) {
  EXPECT_EQ(blocksOf("3. x\n7. y"), "numbers(x)(y)\n");
  EXPECT_EQ(blocksOf("1.x"), "p(1.x)\n");
  EXPECT_EQ(blocksOf("1. \n10. a. b\n 2. c\n. d\n1) e"), "numbers()(a. b)\np( 2. c)\np(. d)\np(1) e)\n");
}

TEST(MarkdownParser, NumbersMayBeDecimalDigitsOfAnyScript) {
  EXPECT_EQ(blocksOf("\u0663. x\n1\uFF12. y\n\u096B. z"), "numbers(x)(y)(z)\n");
  EXPECT_EQ(blocksOf("\u00B2. x\n\u2167. y"), "p(\u00B2. x)\np(\u2167. y)\n");
}

TEST(MarkdownParser, EveryOtherLineIsAParagraphOfItsOwn) {
  EXPECT_EQ(blocksOf("line one\nline two"), "p(line one)\np(line two)\n");
  EXPECT_EQ(blocksOf("  indented \t\n> quote\n---"), "p(  indented \t)\np(> quote)\np(---)\n");
}

TEST(MarkdownParser, OnlyALineFeedEndsALine) {
  EXPECT_EQ(blocksOf("a\r\nb\rc\u2028d\u0085e\vf"), "p(a\r)\np(b\rc\u2028d\u0085e\vf)\n");
  EXPECT_EQ(blocksOf("\r\n"), "p(\r)\n");
}

TEST(MarkdownParser, BytesThatAreNoUTF8StayInTheirLine) {
  EXPECT_EQ(blocksOf("\xFF\n\xC3"), "p(\xFF)\np(\xC3)\n");
  EXPECT_EQ(blocksOf("- \x80\xC2\n"), "bullets(\x80\xC2)\n");
  EXPECT_EQ(blocksOf(std::string_view("a\0b\n\0", 5)), std::string("p(a\0b)\np(\0)\n", 12));
}

TEST(MarkdownParser, TableRows) {
  using Cells = std::vector<std::string_view>;
  EXPECT_EQ(parseTableRow("| a | b |"), (Cells{" a ", " b "}));
  EXPECT_EQ(parseTableRow(" \ta||b\u00A0"), (Cells{"a", "", "b"}));
  EXPECT_EQ(parseTableRow("a\\|b"), (Cells{"a\\", "b"}));
  EXPECT_EQ(parseTableRow("a|"), (Cells{"a"}));
  EXPECT_EQ(parseTableRow("|a"), (Cells{"a"}));
  EXPECT_EQ(parseTableRow("|"), (Cells{""}));
  EXPECT_EQ(parseTableRow("||"), (Cells{""}));
  EXPECT_EQ(parseTableRow("|||"), (Cells{"", ""}));
  EXPECT_EQ(parseTableRow(""), (Cells{""}));
  EXPECT_EQ(parseTableRow("| a |\r"), (Cells{" a ", "\r"}));
}

TEST(MarkdownParser, TableOfSeparatorsAloneIsNoTable) {
  const std::string_view separators[] = {"|---|", "-"};
  EXPECT_FALSE(parseTable(separators));
  EXPECT_FALSE(parseTable({}));
  const std::string_view lines[] = {"-", "|a|", "-", "b"};
  EXPECT_EQ(parseTable(lines), (MarkdownTable{{"a"}, {{"b"}}, 1}));
}

TEST(MarkdownParser, BlocksPointIntoTheText) {
  const std::string text = "# a\nb\n- c\n1. d\n|e|\n|-|\n|f|\n```x\ng\n```";
  const auto blocks = parseMarkdownContent(text);
  ASSERT_EQ(blocks.size(), 6U);
  EXPECT_EQ(std::get<MarkdownHeading>(blocks[0]).text.data(), &text[text.find('a')]);
  EXPECT_EQ(std::get<MarkdownParagraph>(blocks[1]).text.data(), &text[text.find('b')]);
  EXPECT_EQ(std::get<MarkdownBulletList>(blocks[2]).items[0].data(), &text[text.find('c')]);
  EXPECT_EQ(std::get<MarkdownNumberedList>(blocks[3]).items[0].data(), &text[text.find('d')]);
  EXPECT_EQ(std::get<MarkdownTable>(blocks[4]).headers[0].data(), &text[text.find('e')]);
  EXPECT_EQ(std::get<MarkdownTable>(blocks[4]).rows[0][0].data(), &text[text.find('f')]);
  EXPECT_EQ(std::get<MarkdownCodeBlock>(blocks[5]).code.data(), &text[text.find('g')]);
}

TEST(MarkdownDocument, KeepsItsTextWhenMoved) {
  // Short enough to be stored inside a std::string object, which does not survive a move of that object.
  MarkdownDocument first("a\n- b");
  const auto second = std::move(first);
  EXPECT_EQ(testing::describe(second.blocks()), "p(a)\nbullets(b)\n");
  EXPECT_EQ(second.blocks(), MarkdownDocument("a\n- b").blocks());
  EXPECT_NE(second.blocks(), MarkdownDocument("a\n- c").blocks());
}

}  // namespace
}  // namespace lumiwren
