#include "base/PrintLine.h"

#include <gtest/gtest.h>

#include <string>

namespace lumiwren {
namespace {

std::string printed(std::string_view text) {
  ::testing::internal::CaptureStdout();
  printLine(text);
  return ::testing::internal::GetCapturedStdout();
}

TEST(PrintLineTest, EndsTheLine) {
  EXPECT_EQ(printed("text"), "text\n");
  EXPECT_EQ(printed(""), "\n");
  EXPECT_EQ(printed("é\U0001F426"), "é\U0001F426\n");
}

TEST(PrintLineTest, ShowsControlCharactersAsQuestionMarks) {
  EXPECT_EQ(printed(std::string_view("a\nb\r\tc\x1B[31m\x7F\0d", 14)), "a?b??c?[31m??d\n");
}

}  // namespace
}  // namespace lumiwren
