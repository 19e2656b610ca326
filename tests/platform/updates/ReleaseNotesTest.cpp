#include "platform/linux/updates/ReleaseNotes.h"

#include <gtest/gtest.h>

#include <string>

namespace lumiwren {
namespace {

TEST(ReleaseNotes, MarkupBecomesLinesOfPlainText) {
  EXPECT_EQ(
      plainReleaseNotes("<h2>What is new</h2>\n<ul>\n <li>One &amp;   <b>two</b></li>\n <li>Three</li>\n</ul>"
                        "<p>Thanks<br/>a lot.</p><p>Bye</p>"),
      "What is new\n\n\u2022 One & two\n\u2022 Three\n\nThanks\na lot.\n\nBye");
}

TEST(ReleaseNotes, PlainTextKeepsItsLines) {
  EXPECT_EQ(plainReleaseNotes("\n - one\n   - two\n\n 1 < 2 > 0 & <3\n"),
            "- one\n   - two\n\n 1 < 2 > 0 & <3");
}

TEST(ReleaseNotes, ReferencesAreResolvedOnceAndStayText) {
  EXPECT_EQ(
      plainReleaseNotes("&lt;b&gt; &amp;lt; &#233;&#xE9; &hellip; &unknown; &#0; &#xD800; &#x110000; &; &"),
      "<b> &lt; \u00e9\u00e9 \u2026 &unknown; &#0; &#xD800; &#x110000; &; &");
  EXPECT_EQ(plainReleaseNotes("<p>&lt;script&gt;alert(1)&lt;/script&gt;</p>"), "<script>alert(1)</script>");
}

TEST(ReleaseNotes, ScriptsStylesAndCommentsAreNotRead) {
  EXPECT_EQ(plainReleaseNotes("a<script>if (1<2) alert('</b>')</script>b<!-- c <p> -->d<style>e{}</style>"
                              "<a href=\"x>y\" title='>'>f</a><![CDATA[ g ]]>"),
            "abdf");
}

TEST(ReleaseNotes, WhatDoesNotEndHidesTheRest) {
  EXPECT_EQ(plainReleaseNotes("a <b"), "a");
  EXPECT_EQ(plainReleaseNotes("a<!-- b"), "a");
  EXPECT_EQ(plainReleaseNotes("a<i x=\"b>c"), "a");
  EXPECT_EQ(plainReleaseNotes(""), "");
}

TEST(ReleaseNotes, LongNotesAreCutOff) {
  const auto notes = plainReleaseNotes(std::string(900'000, 'x'));
  EXPECT_EQ(notes, std::string(100'000, 'x'));
}

}  // namespace
}  // namespace lumiwren
