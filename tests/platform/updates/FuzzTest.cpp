#include "support/FuzzTarget.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {
namespace {

TEST(Fuzz, ChangedFeedsAreReadOrRefused) {
  constexpr int rounds = 100'000;
  const std::string head =
      "<rss xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>";
  const std::vector<std::string> seeds{
      head +
          "<item><sparkle:version>1.2-rc.1</sparkle:version><description><![CDATA[<p>A&amp;<b x='>'>B</b>]]>"
          "</description><enclosure url=\"https://e.org/x\" length=\"9\" "
          "sparkle:edSignature=\"c2ln\"/></item>"
          "</channel></rss>",
      head +
          "<item><description>&lt;li&gt;\u00e9&#233;</description><enclosure sparkle:os=\"linux\" url=\"u\" "
          "sparkle:shortVersionString=\"2.0\"/></item><item/></channel></rss>",
      "<!DOCTYPE rss [<!ENTITY a \"&b;&b;\"><!ENTITY b \"c\">]><rss>&a;</rss>",
  };
  const std::vector<std::string_view> pieces{
      "<item>", "</item>", "<![CDATA[", "]]>", "&#x", "&amp;", "<!--", "-->", "<sparkle:version>",
      "\xc3",   "<?x ?>",  "<script>",  "\"",  ">",   "\n"};
  std::mt19937 random(5);
  for (int round = 0; round < rounds; ++round) {
    std::string feed = seeds[random() % seeds.size()];
    for (auto edits = 1 + random() % 4; edits > 0; --edits) {
      const auto at = random() % (feed.size() + 1);
      switch (random() % 4) {
        case 0:
          feed.insert(at, pieces[random() % pieces.size()]);
          break;
        case 1:
          feed.erase(at, random() % 20);
          break;
        case 2:
          feed.insert(at, feed.substr(random() % (feed.size() + 1), random() % 40));
          break;
        default:
          feed.insert(at, 1, static_cast<char>(random()));
      }
    }
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(feed.data()), feed.size());
  }
}

}  // namespace
}  // namespace lumiwren
