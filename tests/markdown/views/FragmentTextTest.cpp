#include "markdown/views/FragmentText.h"
#include "ui/Fonts.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

FragmentText styled(std::string_view line) {
  return FragmentText::styled(line, systemFont(13), SemanticColors(QPalette()));
}

TEST(FragmentText, TheStylesOfALineBecomeFormatsOfItsText) {
  const auto text = styled("a **bold** *slanted* `code` ~~gone~~");
  EXPECT_EQ(text.text, QStringLiteral("a bold slanted code gone"));
  ASSERT_EQ(text.formats.size(), 4);
  EXPECT_EQ(text.formats[0].start, 2);
  EXPECT_EQ(text.formats[0].length, 4);
  EXPECT_EQ(text.formats[0].format.fontWeight(), QFont::Bold);
  EXPECT_TRUE(text.formats[1].format.fontItalic());
  EXPECT_EQ(text.formats[2].format.font().family(), monospacedSystemFont(12).family());
  EXPECT_TRUE(text.formats[3].format.fontStrikeOut());
}

TEST(FragmentText, PositionsCountUTF16UnitsAlsoAfterOtherScripts) {
  const auto text = styled("\xC3\xA9\xF0\x9F\x98\x80 **b**");
  ASSERT_EQ(text.formats.size(), 1);
  EXPECT_EQ(text.formats[0].start, 4);
}

TEST(FragmentText, OnlyAddressesThatAreSafeToOpenAreLinks) {
  const struct {
    const char *line;
    const char *address;
  } cases[] = {
      {"[x](https://example.org/a?b=c)", "https://example.org/a?b=c"},
      {"[x](HTTP://example.org)", "http://example.org"},
      {"[x](mailto:a@example.org)", "mailto:a@example.org"},
      {"[x](javascript:alert)", nullptr},
      {"[x](file:///etc/passwd)", nullptr},
      {"[x](relative/path)", nullptr},
      {"[x](https:///nohost)", nullptr},
      {"[x](data:text/html,hi)", nullptr},
  };
  for (const auto &[line, address] : cases) {
    const auto text = styled(line);
    EXPECT_EQ(text.text, QStringLiteral("x")) << line;
    ASSERT_EQ(text.links.size(), address ? 1U : 0U) << line;
    if (address) {
      EXPECT_EQ(text.links[0].address.toStdString(), address);
    } else {
      EXPECT_TRUE(text.formats.isEmpty()) << line;
    }
  }
}

TEST(FragmentText, AnAddressHoldsNothingThatATooltipTakesForMarkup) {
  const auto text = styled("[x](<https://example.org/<b>bold</b>>)");
  for (const auto &link : text.links) {
    EXPECT_FALSE(Qt::mightBeRichText(link.address)) << link.address.toStdString();
  }
  EXPECT_TRUE(styled("[x](https://example.org/%3Cb%3E&lt;i&gt;)").links.empty());
  const auto encoded = styled("[x](https://example.org/%3Cb%3E)");
  ASSERT_EQ(encoded.links.size(), 1U);
  EXPECT_EQ(encoded.links[0].address, QLatin1String("https://example.org/%3Cb%3E"));
}

TEST(FragmentText, AnImageIsItsAlternativeText) {
  EXPECT_EQ(styled("![a bird](https://example.org/bird.png)").text, QStringLiteral("a bird"));
}

TEST(FragmentText, MarkupOfOtherKindsIsText) {
  EXPECT_EQ(styled("<b>not bold</b> <img src=x>").text, QStringLiteral("<b>not bold</b> <img src=x>"));
}

}  // namespace
}  // namespace lumiwren
