#include "markdown/MarkdownInline.h"

#include "markdown/Describe.h"

#include <gtest/gtest.h>

#include <string>

namespace lumiwren {
namespace {

std::string runsOf(std::string_view line) {
  return testing::describe(parseInlineMarkdown(line));
}

TEST(MarkdownInline, PlainTextIsOneRun) {
  EXPECT_EQ(runsOf("plain text, 1 < 2."), "(plain text, 1 < 2.)");
  EXPECT_EQ(parseInlineMarkdown(""), MarkdownInlineText());
}

TEST(MarkdownInline, EmphasisStrongCodeStrikethroughAndLinksAreStyled) {
  EXPECT_EQ(runsOf("*a* _b_ **c** __d__ ***e***"), "E(a)( )E(b)( )S(c)( )S(d)( )ES(e)");
  EXPECT_EQ(runsOf("`a*b*` ``c`d``"), "C(a*b*)( )C(c`d)");
  EXPECT_EQ(runsOf("~a~ ~~b~~ ~~~c~~~"), "K(a)( )K(b)( ~~~c~~~)");
  EXPECT_EQ(runsOf("see [the *page*](https://a.example \"title\")."),
            "(see )(the )<https://a.example>E(page)<https://a.example>(.)");
  EXPECT_EQ(runsOf("**a *b* ~~c~~**"), "S(a )ES(b)S( )SK(c)");
}

TEST(MarkdownInline, UnbalancedSyntaxIsPlainText) {
  for (const auto *line :
       {"**bold", "*a", "a*", "`code", "``a`", "~~a", "~~a~", "[text", "[text](", "[text](a b)", "![",
        "<http://a", "]", "[a](b", "\\", "* a *", "_a", "snake_case_name"}) {
    EXPECT_EQ(runsOf(line), "(" + std::string(line) + ")");
  }
}

TEST(MarkdownInline, NothingAtTheStartOfALineIsBlockSyntax) {
  for (const auto *line :
       {"# a", "- a", "+ a", "1. a", "> a", "    a", "---", "===", "~~~", "|a|", "[a]: /b"}) {
    EXPECT_EQ(runsOf(line), "(" + std::string(line) + ")");
  }
  EXPECT_EQ(runsOf("* *a*"), "(* )E(a)");
}

TEST(MarkdownInline, WhiteSpaceIsKept) {
  EXPECT_EQ(runsOf("  a   *b*\t \u00A0"), "(  a   )E(b)(\t \u00A0)");
  EXPECT_EQ(runsOf("a  \r"), "(a  \r)");
  EXPECT_EQ(runsOf("*a*  \nb\r\n c"), "E(a)(  \nb\r\n c)");
}

TEST(MarkdownInline, BackslashAtALineEndIsAHardBreak) {
  EXPECT_EQ(runsOf("a\\\r"), "(a\r)");
  EXPECT_EQ(runsOf("a\\"), "(a\\)");
}

TEST(MarkdownInline, HTMLIsLiteralTextAndHidesWhatLooksLikeSyntaxInIt) {
  EXPECT_EQ(runsOf("<b>x</b> <br/>"), "(<b>x</b> <br/>)");
  EXPECT_EQ(runsOf("*a <i x=\"*\">*"), "E(a <i x=\"*\">)");
  EXPECT_EQ(runsOf("<!-- *a* --> <?x *a*?> <!D *a*> <![CDATA[*a*]]>"),
            "(<!-- *a* --> <?x *a*?> <!D *a*> <![CDATA[*a*]]>)");
  EXPECT_EQ(runsOf("<!--> *a* -->"), "(<!--> )E(a)( -->)");
  EXPECT_EQ(runsOf("<?x?\?> *a*?>"), "(<?x?\?> )E(a)(?>)");
  EXPECT_EQ(runsOf("<![CDATA[]]]> *a*]]>"), "(<![CDATA[]]]> )E(a)(]]>)");
  EXPECT_EQ(runsOf("<3 *a*>"), "(<3 )E(a)(>)");
}

TEST(MarkdownInline, CharacterReferences) {
  EXPECT_EQ(runsOf("&amp;&lt;&copy;&#65;&#x1F600;&nGt;"), "(&<\u00A9A\U0001F600\u226B\u20D2)");
  EXPECT_EQ(runsOf("&#0;&#xD800;&#x110000;&#99999999;"), "(\uFFFD\uFFFD\uFFFD\uFFFD)");
  EXPECT_EQ(runsOf("& &x; &amp &#; &#x; &#123456789; &copy"), "(& &x; &amp &#; &#x; &#123456789; &copy)");
  EXPECT_EQ(runsOf("&#42;a&#42; `&amp;`"), "(*a* )C(&amp;)");
}

TEST(MarkdownInline, BackslashEscapesPunctuationOnly) {
  EXPECT_EQ(runsOf("\\*a\\* \\_ \\[b](c) \\` \\\\ \\~~"), "(*a* _ [b](c) ` \\ ~~)");
  EXPECT_EQ(runsOf("\\a \\  \\\u00E9"), "(\\a \\  \\\u00E9)");
  EXPECT_EQ(runsOf("`\\`*a*"), "C(\\)E(a)");
}

TEST(MarkdownInline, CodeSpansLoseOneSpaceAtEachEnd) {
  EXPECT_EQ(runsOf("`` `a` ``"), "C(`a`)");
  EXPECT_EQ(runsOf("` a ` `  ` ` b`"), "C(a)( )C(  )( )C( b)");
  const std::string ticks(200, '`');
  EXPECT_EQ(runsOf(ticks + "a" + ticks), "C(a)");
}

TEST(MarkdownInline, Links) {
  EXPECT_EQ(runsOf("[a](<b c> 't')"), "(a)<b c>");
  EXPECT_EQ(runsOf("[a](b(c)d)"), "(a)<b(c)d>");
  EXPECT_EQ(runsOf("[a]( b\t(t) )"), "(a)<b>");
  EXPECT_EQ(runsOf("[a](b\\)&amp;%20)"), "(a)<b)&%20>");
  EXPECT_EQ(runsOf("[a](javascript:x)"), "(a)<javascript:x>");
  EXPECT_EQ(runsOf("[a [b](c) d](e)"), "([a )(b)<c>( d](e))");
  EXPECT_EQ(runsOf("[`]`](b) [a](b)](c)"), "C(])<b>( )(a)<b>(](c))");
  EXPECT_EQ(runsOf("[[a](b)](c)"), "([)(a)<b>(](c))");
}

TEST(MarkdownInline, ALinkWithoutDestinationIsPlainText) {
  EXPECT_EQ(runsOf("x [a]() [*b*](<>)"), "(x a )E(b)");
  EXPECT_TRUE(parseInlineMarkdown("[a]()").links.empty());
}

TEST(MarkdownInline, ReferenceLinksHaveNoDefinitions) {
  EXPECT_EQ(runsOf("[a][b] [c][] [d] [^1]"), "([a][b] [c][] [d] [^1])");
  EXPECT_EQ(runsOf("[*a*][b]"), "([)E(a)(][b])");
}

TEST(MarkdownInline, Autolinks) {
  EXPECT_EQ(runsOf("<https://a.example/?b=*c*>"), "(https://a.example/?b=*c*)<https://a.example/?b=*c*>");
  EXPECT_EQ(runsOf("<a.b@c.example>"), "(a.b@c.example)<mailto:a.b@c.example>");
  EXPECT_EQ(runsOf("<http://a b> <x:> https://a.example www.a.example"),
            "(<http://a b> <x:> https://a.example www.a.example)");
  EXPECT_EQ(runsOf("[a <http://b> c](d)"), "(a )<d>(http://b)<http://b>( c)<d>");
}

TEST(MarkdownInline, ImagesShowTheirAlternativeText) {
  EXPECT_EQ(runsOf("![a *b*](c.png \"t\")!"), "I(a )EI(b)(!)");
  EXPECT_EQ(runsOf("[![a](b) c](d)"), "I(a)<d>( c)<d>");
  EXPECT_EQ(runsOf("![a [b](c)](d)"), "I(a )I(b)<c>");
  EXPECT_EQ(runsOf("!a ![b]"), "(!a ![b])");
}

TEST(MarkdownInline, UnderscoresInsideWordsAreText) {
  EXPECT_EQ(runsOf("a_b_c a*b*c"), "(a_b_c a)E(b)(c)");
  EXPECT_EQ(runsOf("\u043F_\u0440_"), "(\u043F_\u0440_)");
}

TEST(MarkdownInline, UnicodePunctuationAndWhiteSpaceBesideDelimiters) {
  EXPECT_EQ(runsOf("a*\u201Cb\u201D*c"), "(a*\u201Cb\u201D*c)");
  EXPECT_EQ(runsOf("*\u00A0a*"), "(*\u00A0a*)");
  EXPECT_EQ(runsOf("**\u4E2D\u6587\u3002**\u4E2D"), "(**\u4E2D\u6587\u3002**\u4E2D)");
  EXPECT_EQ(runsOf("**\u4E2D\u6587**\u3002"), "S(\u4E2D\u6587)(\u3002)");
}

TEST(MarkdownInline, TheLengthsOfMatchingRunsDecideBetweenEmphasisAndStrong) {
  EXPECT_EQ(runsOf("***a** b*"), "ES(a)E( b)");
  EXPECT_EQ(runsOf("***a* b**"), "ES(a)S( b)");
  EXPECT_EQ(runsOf("**a*"), "(*)E(a)");
  EXPECT_EQ(runsOf("*a**"), "E(a)(*)");
  EXPECT_EQ(runsOf("*a**b*"), "E(a**b)");
  EXPECT_EQ(runsOf("****a****"), "S(a)");
}

TEST(MarkdownInline, StrikethroughNeedsAsManyTildesOnBothSides) {
  EXPECT_EQ(runsOf("~~a~ b~~"), "K(a~ b)");
  EXPECT_EQ(runsOf("~a~~ b"), "(~a~~ b)");
  EXPECT_EQ(runsOf("about ~5 to ~7"), "(about ~5 to ~7)");
}

TEST(MarkdownInline, BytesThatAreNoUTF8ComeOutAsTheyWentIn) {
  EXPECT_EQ(runsOf("*\xFF* \x80*a*"), "E(\xFF)( \x80)E(a)");
  EXPECT_EQ(runsOf(std::string_view("*\0*", 3)), std::string("E(\0)", 4));
}

TEST(MarkdownInline, NeighbouringRunsDiffer) {
  const auto text = parseInlineMarkdown("*a*_b_ \\*&amp;");
  ASSERT_EQ(text.runs.size(), 2U);
  EXPECT_EQ(text.runs[0], (MarkdownRun{0, 2, MarkdownStyle::Emphasis, MarkdownRun::noLink}));
  EXPECT_EQ(text.runs[1], (MarkdownRun{2, 3, MarkdownStyle::Plain, MarkdownRun::noLink}));
}

}  // namespace
}  // namespace lumiwren
