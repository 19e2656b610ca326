#include "base/Unicode.h"
#include "markdown/Describe.h"
#include "markdown/MarkdownParser.h"
#include "markdown/RandomText.h"
#include "markdown/ReferenceParser.h"

#include <gtest/gtest.h>

#include <array>

namespace lumiwren {
namespace {

constexpr std::array<std::string_view, 58> blockPieces{
    "\n",           "\n",          "\n",     "\n",     "\n",         "\n",     "\n",     "\n",
    "\n\n",         "|",           "|",      "|",      "-",          "--",     "---",    ":",
    "|---|",        "|-",          " ",      " ",      "\t",         "\r",     "\r\n",   "# ",
    "## ",          "### ",        "#",      "- ",     "* ",         "*",      "1",      ".",
    "1. ",          "22. ",        "x",      "word",   "```",        "```",    "`",      "md",
    "```md",        "```markdown", "JSON",   "\u00A0", "\u3000",     "\u2028", "\u0085", "\v",
    "\u0663",       "\uFF13",      "\u00B2", "\u00E9", "\U0001F600", "\u200B", "a|b",    "|a|",
    "\na|b\n-|-\n", "\n```\n"};

TEST(ParserDifferential, RandomDocumentsEqualTheSlowParser) {
  testing::RandomText random(5);
  for (int i = 0; i < 30'000; ++i) {
    const auto text = random.of(blockPieces, 40);
    ASSERT_EQ(testing::describe(parseMarkdownContent(text)), testing::describeBlocksSlowly(text)) << text;
  }
}

TEST(ParserDifferential, EveryPrefixOfAnAnswerEqualsTheSlowParser) {
  testing::RandomText random(6);
  for (int i = 0; i < 150; ++i) {
    const auto text = random.of(blockPieces, 60);
    for (std::size_t length = 0; length <= text.size(); ++length) {
      const auto prefix = std::string_view(text).substr(0, length);
      // The slow parser reads whole code points; cut ones are the fuzz test's.
      if (unicode::isValidUTF8(prefix)) {
        ASSERT_EQ(testing::describe(parseMarkdownContent(prefix)), testing::describeBlocksSlowly(prefix))
            << prefix;
      }
    }
  }
}

}  // namespace
}  // namespace lumiwren
