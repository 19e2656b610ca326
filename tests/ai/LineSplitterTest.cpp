#include "ai/LineSplitter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lumiwren {
namespace {

using Lines = std::vector<std::string>;

Lines split(const std::vector<std::string_view> &pieces) {
  Lines lines;
  const auto collect = [&](std::string_view line) { lines.emplace_back(line); };
  LineSplitter splitter;
  for (const auto piece : pieces) {
    splitter.feed(piece, collect);
  }
  splitter.finish(collect);
  return lines;
}

TEST(LineSplitter, BothLineEndsAreStripped) {
  EXPECT_EQ(split({"a\nb\r\nc\n"}), (Lines{"a", "b", "c"}));
}

TEST(LineSplitter, EmptyLinesAreLines) {
  EXPECT_EQ(split({"\n\r\n\na\n\n"}), (Lines{"", "", "", "a", ""}));
}

TEST(LineSplitter, TheLastLineNeedsNoEnd) {
  EXPECT_EQ(split({"a\nb"}), (Lines{"a", "b"}));
  EXPECT_EQ(split({"a\nb\r"}), (Lines{"a", "b"}));
  EXPECT_EQ(split({"a\n"}), (Lines{"a"}));
  EXPECT_EQ(split({}), Lines{});
}

TEST(LineSplitter, ACarriageReturnInsideALineStays) {
  EXPECT_EQ(split({"a\rb\r\r\n"}), (Lines{"a\rb\r"}));
}

TEST(LineSplitter, OtherLineSeparatorsAreText) {
  EXPECT_EQ(split({"a\xE2\x80\xA8"
                   "b\xC2\x85"
                   "c\v\f\0d\n"}),
            (Lines{"a\xE2\x80\xA8"
                   "b\xC2\x85"
                   "c\v\f"}));
}

TEST(LineSplitter, WhereTheBytesAreCutDoesNotMatter) {
  const std::string text = "data: \xC3\xA9\xF0\x9F\x90\xA6\r\n\r\n\ndata: x\n\r\nlast";
  const auto whole = split({text});
  ASSERT_EQ(whole.size(), 6U);
  std::vector<std::string_view> bytes;
  for (std::size_t first = 0; first < text.size(); ++first) {
    bytes.push_back(std::string_view(text).substr(first, 1));
    for (std::size_t second = first; second <= text.size(); ++second) {
      const std::string_view view(text);
      EXPECT_EQ(split({view.substr(0, first), view.substr(first, second - first), view.substr(second)}),
                whole)
          << first << " " << second;
    }
  }
  EXPECT_EQ(split(bytes), whole);
}

}  // namespace
}  // namespace lumiwren
