#include "platform/linux/updates/Appcast.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {
namespace {

std::string feedOf(const std::string &items) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
         "<rss version=\"2.0\" xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"\n"
         "     xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><channel><title>Lumiwren</title>\n" +
         items + "</channel></rss>\n";
}

std::vector<std::string> versions(const std::string &feed) {
  std::vector<std::string> result;
  for (const auto &item : parseAppcast(feed)) {
    result.push_back(item.version);
  }
  return result;
}

std::string refusal(const std::string &feed) {
  try {
    parseAppcast(feed);
  } catch (const AppcastError &error) {
    return error.what();
  }
  return {};
}

AppcastItem item(const std::string &version, const std::string &minimumSystemVersion = {}) {
  AppcastItem result;
  result.version = version;
  result.minimumSystemVersion = minimumSystemVersion;
  return result;
}

using Strings = std::vector<std::string>;

TEST(Appcast, ReadsAnItemOfElements) {
  const auto items = parseAppcast(
      feedOf("<item><title>1.2</title><sparkle:version> 45 </sparkle:version>\n"
             "<sparkle:shortVersionString>1.2</sparkle:shortVersionString>\n"
             "<sparkle:minimumSystemVersion>5.10</sparkle:minimumSystemVersion>\n"
             "<description><![CDATA[<h1>New</h1><p>A &amp; B</p>]]></description>\n"
             "<enclosure url=\"https://example.org/a?b=1&amp;c=2\" length=\"1234\" type=\"x/y\"\n"
             " sparkle:edSignature=\"c2ln\" sparkle:os=\"linux\"/></item>"));
  ASSERT_EQ(items.size(), 1U);
  EXPECT_EQ(items[0].version, "1.2");
  EXPECT_EQ(items[0].minimumSystemVersion, "5.10");
  EXPECT_EQ(items[0].url, "https://example.org/a?b=1&c=2");
  EXPECT_EQ(items[0].length, 1234U);
  EXPECT_EQ(items[0].edSignature, "c2ln");
  EXPECT_EQ(items[0].notes, "New\n\nA & B");
}

TEST(Appcast, TheVersionMayBeAnAttributeOrAnElementAndTheShownOneCounts) {
  const std::string url = " url=\"https://e.org/x\"/>";
  EXPECT_EQ(versions(feedOf("<item><enclosure sparkle:version=\"1.1\"" + url +
                            "</item>"
                            "<item><enclosure sparkle:version=\"45\" sparkle:shortVersionString=\"1.2\"" +
                            url +
                            "</item>"
                            "<item><sparkle:version>1.3</sparkle:version><enclosure" +
                            url +
                            "</item>"
                            "<item><enclosure sparkle:version=\"7\"" +
                            url +
                            "<sparkle:version>1.4</sparkle:version></item>"
                            "<item><sparkle:version>46</sparkle:version>"
                            "<enclosure sparkle:shortVersionString=\"1.5\"" +
                            url + "</item>")),
            (Strings{"1.1", "1.2", "1.3", "1.4", "1.5"}));
}

TEST(Appcast, LeavesOutWhatIsNotForThisSystemOrNotForEveryone) {
  const auto entry = [](const std::string &version, const std::string &os, const std::string &more = {}) {
    return "<item><sparkle:version>" + version + "</sparkle:version>" + more +
           "<enclosure url=\"https://e.org/x\"" + os + "/></item>";
  };
  EXPECT_EQ(versions(feedOf(entry("1", "") + entry("2", " sparkle:os=\"macos\"") +
                            entry("3", " sparkle:os=\"linux\"") + entry("4", " sparkle:os=\"windows\"") +
                            entry("5", "", "<sparkle:channel>beta</sparkle:channel>") + entry("six", "") +
                            "<item><sparkle:version>7</sparkle:version></item><item/>" +
                            "<item><enclosure url=\"https://e.org/x\"/></item>")),
            (Strings{"1", "3"}));
}

TEST(Appcast, OfSeveralPackagesTheFirstForThisSystemCounts) {
  const auto items =
      parseAppcast(feedOf("<item><sparkle:version>1</sparkle:version>"
                          "<sparkle:deltas><enclosure url=\"https://e.org/delta\"/></sparkle:deltas>"
                          "<enclosure url=\"https://e.org/mac\" sparkle:os=\"macos\" length=\"1\"/>"
                          "<enclosure url=\"https://e.org/linux\" sparkle:os=\"linux\" length=\"2\"/>"
                          "<enclosure url=\"https://e.org/other\" length=\"3\"/></item>"));
  ASSERT_EQ(items.size(), 1U);
  EXPECT_EQ(items[0].url, "https://e.org/linux");
  EXPECT_EQ(items[0].length, 2U);
}

TEST(Appcast, ALengthThatIsNoNumberIsUnknown) {
  for (const auto *const length : {"", "-1", "12x", "99999999999999999999999", " 5"}) {
    const auto items = parseAppcast(
        feedOf("<item><sparkle:version>1</sparkle:version><enclosure url=\"https://e.org/x\" length=\"" +
               std::string(length) + "\"/></item>"));
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].length, 0U) << length;
  }
}

TEST(Appcast, NamesOfOtherNamespacesAndPlacesMeanNothing) {
  EXPECT_EQ(versions(feedOf("<item xmlns:sparkle=\"urn:other\"><sparkle:version>1</sparkle:version>"
                            "<enclosure url=\"https://e.org/x\"/></item>"
                            "<image><item><sparkle:version>2</sparkle:version>"
                            "<enclosure url=\"https://e.org/x\"/></item></image>")),
            Strings());
}

TEST(Appcast, AFeedWithoutItemsIsAFeed) {
  EXPECT_EQ(versions(feedOf("")), Strings());
  EXPECT_EQ(versions("<rss/>"), Strings());
}

TEST(Appcast, WhatIsNoFeedIsRefusedInOneLine) {
  EXPECT_EQ(refusal(""), "no element found in line 1");
  EXPECT_EQ(refusal("<html><body/></html>"), "it is no RSS feed");
  EXPECT_EQ(refusal("{\"a\": 1}"), "not well-formed (invalid token) in line 1");
  EXPECT_EQ(refusal("<rss>\n<channel>\n</rss>"), "mismatched tag in line 3");
  EXPECT_EQ(refusal(feedOf("<item>").substr(0, 200)).find('\n'), std::string::npos);
  EXPECT_FALSE(refusal("<rss>\xff</rss>").empty());
  EXPECT_FALSE(refusal("<rss>&other;</rss>").empty());
  EXPECT_EQ(refusal("<rss>" + std::string(1'000'000, ' ') + "</rss>"), "it is too long");
}

TEST(Appcast, DocumentTypesAndWithThemEntitiesAreRefusedAtOnce) {
  EXPECT_EQ(refusal("<!DOCTYPE rss><rss/>"), "a document type in line 1");
  EXPECT_EQ(
      refusal("<?xml version=\"1.0\"?>\n<!DOCTYPE rss [<!ENTITY a \"b\">]><rss><channel>&a;</channel></rss>"),
      "a document type in line 2");
  EXPECT_EQ(refusal("<!DOCTYPE rss SYSTEM \"file:///etc/passwd\"><rss/>"), "a document type in line 1");
}

TEST(Appcast, DeepNestingIsRefused) {
  std::string nested = "<rss>";
  for (int depth = 0; depth < 100'000; ++depth) {
    nested += "<a>";
  }
  EXPECT_EQ(refusal(nested), "too deep a nesting in line 1");
}

TEST(Appcast, TheNewestThatThisSystemCanRunIsTheUpdate) {
  const std::vector<AppcastItem> items{item("1.9"), item("1.10", "6.1"), item("1.8"), item("2.0", "6.2"),
                                       item("3.0", "any")};
  EXPECT_EQ(newestUpdate(items, "1.0", "6.1.0")->version, "1.10");
  EXPECT_EQ(newestUpdate(items, "1.0", "6.0")->version, "1.9");
  EXPECT_EQ(newestUpdate(items, "1.9", "7")->version, "2.0");
  EXPECT_FALSE(newestUpdate({item("1.0"), item("0.9"), item("1.0-rc1")}, "1.0", "6"));
  EXPECT_FALSE(newestUpdate({}, "1.0", "6"));
}

}  // namespace
}  // namespace lumiwren
