#include "markdown/MarkdownInline.h"
#include "markdown/MarkdownParser.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

// Enough for a slow machine under a sanitizer; time that grows with the square of the length is beyond it.
// Processor time, because other programs may keep this one waiting.
constexpr double atOnceSeconds = 5;

void expectAtOnce(const std::string &what, const std::function<void()> &work) {
  const auto start = std::clock();
  work();
  EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, atOnceSeconds) << what;
}

std::string repeated(std::string_view unit, std::size_t times = 60'000) {
  std::string text;
  text.reserve(unit.size() * times);
  for (; times > 0; --times) {
    text += unit;
  }
  return text;
}

TEST(HostileInput, InlineMarkdownIsInterpretedInLinearTime) {
  std::vector<std::string> lines;
  for (const auto *unit : {"[",         "]",
                           "![",        "*",
                           "_",         "~",
                           "`",         "<",
                           "&",         "\\",
                           "*a_ ",      "*a **a ",
                           "_a __a ",   "a* ",
                           "a** ",      "a*",
                           "a**",       "*_",
                           "~*",        "~~a ~",
                           "a~ b~~ ",   "~a ~~b",
                           "![](",      "[](",
                           "[a](",      "[a](b",
                           "[a](b \"",  "[a](b '",
                           "[a](b (",   "[a](b \"\\\"",
                           "[a](<b",    "[a](\\(",
                           "[[a](b)",   "![[a](b)",
                           "[a](b)",    "<a ",
                           "<a b=\"",   "<a b='\" c=\"'",
                           "<!--",      "<!-- -",
                           "<?",        "<!X ",
                           "<![CDATA[", "</a ",
                           "<a@b",      "<ab:",
                           "<a@b.",     "&#",
                           "&amp",      "&amp;",
                           "``a`",      "`a``",
                           "*a_b*c_",   "**x* ",
                           "a**b*c ",   " _x*y_",
                           "* _ ~",     "[*a](b)*",
                           "\xFF",      "\u201C*",
                           "*\u201C",   "~*~_"}) {
    lines.push_back(repeated(unit));
  }
  lines.push_back(repeated("[") + repeated("](a)"));
  lines.push_back(repeated("![") + "a" + repeated("](b)"));
  lines.push_back(repeated("![") + repeated("[a](b)"));
  lines.push_back(repeated("*") + "a" + repeated("*"));
  lines.push_back(repeated("*a ") + repeated("b* "));
  lines.push_back(repeated("**a ") + repeated("b*"));
  lines.push_back(repeated("**a ") + repeated(" _x*y_"));
  lines.push_back("~a " + repeated("*a ") + repeated("b~~ "));
  lines.push_back("~~a " + repeated("b~ "));
  lines.push_back(repeated(" ~a") + repeated("b~~b"));
  lines.push_back("[a](" + repeated("("));
  lines.push_back("<a" + repeated(" b"));
  std::string growing;
  for (std::size_t length = 1; length < 1'500; ++length) {
    growing += std::string(length, '`') + "a";
  }
  lines.push_back(growing);
  for (const auto &line : lines) {
    expectAtOnce(line.substr(0, 40), [&] {
      const auto text = parseInlineMarkdown(line);
      EXPECT_LE(text.text.size(), line.size());
    });
  }
}

TEST(HostileInput, BlocksAreFoundInLinearTime) {
  for (const auto *unit : {"-",     "|",       ":",     " ",         "\t",  "\u2003", "1",       "\u0663",
                           "#",     "`",       "\n",    "|\n",       "-\n", "|\n-\n", "- \n",    "1. \n",
                           "```\n", "```md\n", "a|b\n", "a|b\n-x\n", "\r",  "\xFF",   "\xE2\x80"}) {
    const auto text = repeated(unit, 200'000);
    for (const auto &tail : {"x", "\n-"}) {
      expectAtOnce(unit, [&] { parseMarkdownContent(text + tail); });
      expectAtOnce(unit, [&] { parseMarkdownContent("a|b\n" + text + tail); });
    }
  }
}

}  // namespace
}  // namespace lumiwren
