#include "base/Unicode.h"

#include <gtest/gtest.h>

#include <set>

namespace lumiwren::unicode {
namespace {

const std::string invalidTexts[]{"\x80",
                                 "\xBF",
                                 "\xC0\x80",
                                 "\xC1\xBF",
                                 "\xC3",
                                 "\xE2\x82",
                                 "\xE0\x80\x80",
                                 "\xE0\x9F\xBF",
                                 "\xED\xA0\x80",
                                 "\xED\xBF\xBF",
                                 "\xF0\x9F\x90",
                                 "\xF4\x90\x80\x80",
                                 "\xF0\x8F\xBF\xBF",
                                 "\xF5\x80\x80\x80",
                                 "\xF8\x88\x80\x80\x80",
                                 "\xFE",
                                 "\xFF",
                                 "\xC3("};

TEST(UnicodeTest, DecodesEveryLengthForwardsAndBackwards) {
  const std::pair<std::string, char32_t> points[]{
      {"A", U'A'},        {std::string(1, '\0'), 0}, {"\x7F", 0x7F},          {"\u0080", 0x80},
      {"\u07FF", 0x7FF},  {"\u0800", 0x800},         {"\uD7FF", 0xD7FF},      {"\uE000", 0xE000},
      {"\uFFFF", 0xFFFF}, {"\U00010000", 0x10000},   {"\U0010FFFF", 0x10FFFF}};
  for (const auto &[text, value] : points) {
    const auto padded = "x" + text + "y";
    for (const auto &point : {decodeAt(padded, 1), decodeBefore(padded, 1 + text.size())}) {
      ASSERT_TRUE(point) << static_cast<unsigned>(value);
      EXPECT_EQ(point->value, value);
      EXPECT_EQ(point->length, text.size());
    }
    EXPECT_TRUE(isValidUTF8(padded));
  }
}

TEST(UnicodeTest, RefusesWhatIsNotValid) {
  for (const auto &text : invalidTexts) {
    EXPECT_FALSE(decodeAt(text, 0)) << ::testing::PrintToString(text);
    EXPECT_FALSE(isValidUTF8(text));
    EXPECT_FALSE(isValidUTF8("good " + text));
    EXPECT_FALSE(isValidUTF8(text + " good"));
  }
}

TEST(UnicodeTest, DecodesNothingBeyondTheEnds) {
  EXPECT_FALSE(decodeAt("", 0));
  EXPECT_FALSE(decodeAt("a", 1));
  EXPECT_FALSE(decodeAt("a", 100));
  EXPECT_FALSE(decodeBefore("a", 0));
  EXPECT_FALSE(decodeBefore("\x80\x80\x80\x80\x80", 5));
  EXPECT_FALSE(decodeBefore("a\x80", 2));
  EXPECT_FALSE(decodeBefore("é", 1));
  EXPECT_TRUE(isValidUTF8(""));
}

TEST(UnicodeTest, DoesNotReadBeyondAViewThatCutsACharacter) {
  const std::string whole = "\U0001F426";
  for (std::size_t length = 1; length < whole.size(); ++length) {
    const std::string cut = whole.substr(0, length);  // exactly as much memory as there is text
    EXPECT_FALSE(decodeAt(cut, 0));
    EXPECT_FALSE(decodeBefore(cut, length));
  }
}

TEST(UnicodeTest, KnowsDecimalDigitsOfEveryScript) {
  for (const auto digit : U"0123456789٠٩०९０９\U0001D7CE") {
    EXPECT_EQ(isDecimalDigit(digit), digit != 0) << static_cast<unsigned>(digit);
  }
  for (const auto other : U"a/:²½Ⅷ①一") {
    EXPECT_FALSE(isDecimalDigit(other)) << static_cast<unsigned>(other);
  }
}

TEST(UnicodeTest, KnowsExactlyTheWhiteSpaceOfUnicode) {
  const std::set<char32_t> all{0x09,   0x0A,   0x0B,   0x0C,   0x0D,   0x20,   0x85,   0xA0,   0x1680,
                               0x2000, 0x2001, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006, 0x2007, 0x2008,
                               0x2009, 0x200A, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};
  const std::set<char32_t> vertical{0x0A, 0x0B, 0x0C, 0x0D, 0x85, 0x2028, 0x2029};
  for (char32_t point = 0; point < 0x110000; ++point) {
    ASSERT_EQ(isWhitespace(point), all.count(point) == 1) << static_cast<unsigned>(point);
    ASSERT_EQ(isHorizontalSpace(point), all.count(point) == 1 && vertical.count(point) == 0)
        << static_cast<unsigned>(point);
  }
}

TEST(UnicodeTest, TrimsBothEndsAndNothingBetween) {
  EXPECT_EQ(trimHorizontalSpace(" \t\u00A0\u3000a \u2003b\u2003 \t"), "a \u2003b");
  EXPECT_EQ(trimHorizontalSpace("\n a \n"), "\n a \n");
  EXPECT_EQ(trimWhitespace("\n\r\n\u2028 a\n b \u0085\v\f"), "a\n b");
  for (const auto *blank : {"", " ", "\t\u3000 "}) {
    EXPECT_EQ(trimHorizontalSpace(blank), "");
    EXPECT_EQ(trimWhitespace(blank), "");
  }
  EXPECT_EQ(trimWhitespace("\u200Ba\uFEFF"), "\u200Ba\uFEFF");  // without width, but no white space
}

TEST(UnicodeTest, TrimmingStopsAtWhatIsNotValid) {
  EXPECT_EQ(trimWhitespace(" \xFF \xE3\x80 "), "\xFF \xE3\x80");
  EXPECT_EQ(trimWhitespace("\x80 "), "\x80");
}

TEST(UnicodeTest, LowersEveryScriptAndKeepsInvalidBytes) {
  EXPECT_EQ(toLower("ABC Éß ΩΣ ЖЯ İ １Ａ \U00010400"), "abc éß ωσ жя i １ａ \U00010428");
  EXPECT_EQ(toLower("A\xFF"
                    "B\xC3"),
            "a\xFF"
            "b\xC3");
  EXPECT_EQ(toLower(std::string_view("A\0B", 3)), std::string_view("a\0b", 3));
}

}  // namespace
}  // namespace lumiwren::unicode
