#include "markdown/RandomText.h"
#include "support/FuzzTarget.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

constexpr std::array<std::string_view, 3> seeds{
    "# Title\n\nSome *text* with **bold**, `code` and [a link](https://a.example \"t\").\n\n- one\n- two "
    "&amp; <b>\n\n"
    "| a | b |\n|---|:-:|\n| 1 | ~~2~~ |\n---\n\n```json\n{\"a\": 1}\n```\n1. x\n2. ![y](z)\n",
    "```md\n## In\n* a\n```\n<http://a> <a@b.c> <!-- x --> &#65; \\* ``a`b`` ***x** y*\n",
    "\u00E9*\u201C_\U0001F600~~\u3000|\n|-|\r\n\u0663. \u00A0\n"};

TEST(Fuzz, MutatedAnswersAndAllTheirPrefixesAreConsistent) {
  constexpr std::string_view bytes("\n\n|-:`*_~[]()<>!&;\\\"'# 1.\r\t\0ax\x80\xC3\xE2\xFF", 34);
  testing::RandomText random(3);
  // Each buffer has exactly the size of its text, so that a sanitizer sees a read behind the end.
  const auto run = [](std::string_view text) {
    const std::vector<std::uint8_t> exact(text.begin(), text.end());
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
  };
  for (int round = 0; round < 10'000; ++round) {
    std::string text(seeds[random.below(seeds.size())]);
    for (auto edits = random.below(12); edits > 0; --edits) {
      const auto at = random.below(text.size());
      const char byte = bytes[random.below(bytes.size())];
      switch (random.below(4)) {
        case 0:
          text[at] = byte;
          break;
        case 1:
          text.insert(at, random.below(5) + 1, byte);
          break;
        case 2:
          text.erase(at, random.below(8));
          break;
        default:
          text.insert(at, text.substr(random.below(text.size()), random.below(20)));
      }
      text += text.empty() ? "x" : "";
    }
    run(text);
    if (round % 100 == 0) {
      for (std::size_t length = 0; length < text.size(); ++length) {
        run(std::string_view(text).substr(0, length));
      }
    }
  }
}

}  // namespace
}  // namespace lumiwren
