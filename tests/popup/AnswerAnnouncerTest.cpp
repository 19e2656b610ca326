#include "popup/AnswerAnnouncer.h"

#include "markdown/views/MarkdownTextView.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace lumiwren {
namespace {

TEST(EndOfSentences, IsWhereSomethingFollowsAWholeSentence) {
  const struct {
    const char *text;
    int end;
  } cases[] = {{"", 0},
               {"A wren is", 0},
               {"A wren is a bird.", 0},  // "3." may go on with a digit
               {"A wren is a bird. It", 18},
               {"One. Two! Three? Fo", 17},
               {"Version 1.5 is", 0},
               {"A title\nThe te", 8},
               {"\u9ce5\u3067\u3059\u3002\u5c0f\u3055", 4}};
  for (const auto &[text, end] : cases) {
    EXPECT_EQ(AnswerAnnouncer::endOfSentences(QString::fromUtf8(text)), end) << text;
  }
}

class AnswerAnnouncerTest : public ::testing::Test {
protected:
  void grow(const char *markdown, bool isGrowing = true) {
    answer.setMarkdown(markdown);
    answer.layOut(300);
    announcer.update(&answer, isGrowing, QString());
  }

  QStringList spoken;
  MarkdownTextView answer;
  AnswerAnnouncer announcer{[this](const QString &text) { spoken.push_back(text); }};
};

TEST_F(AnswerAnnouncerTest, TellsWholeSentencesAndEachOnce) {
  for (const char *text : {"A wr", "A wren is", "A wren is a bird.", "A wren is a bird. It"}) {
    grow(text);
  }
  EXPECT_EQ(spoken, QStringList{QStringLiteral("A wren is a bird.")});
  grow("A wren is a bird. It sings");
  EXPECT_EQ(spoken.size(), 1);
  grow("A wren is a bird. It sings", false);
  grow("A wren is a bird. It sings", false);
  EXPECT_EQ(spoken, (QStringList{QStringLiteral("A wren is a bird."), QStringLiteral("It sings")}));
}

TEST_F(AnswerAnnouncerTest, TellsWhatIsReadAndNotItsMarkup) {
  grow("# Title\n- **bold** item\n- an", true);
  EXPECT_EQ(spoken, QStringList{QStringLiteral("Title\n\u2022 bold item")});
}

TEST_F(AnswerAnnouncerTest, TellsAFailureOnce) {
  announcer.update(nullptr, false, QStringLiteral("No network."));
  announcer.update(nullptr, false, QStringLiteral("No network."));
  announcer.update(nullptr, true, QString());
  EXPECT_EQ(spoken, QStringList{QStringLiteral("No network.")});
}

TEST_F(AnswerAnnouncerTest, BeginsAnewWithAnotherAnswer) {
  grow("The first.", false);
  MarkdownTextView next;
  next.setMarkdown("The second.");
  next.layOut(300);
  announcer.update(&next, false, QString());
  EXPECT_EQ(spoken, (QStringList{QStringLiteral("The first."), QStringLiteral("The second.")}));
}

}  // namespace
}  // namespace lumiwren
