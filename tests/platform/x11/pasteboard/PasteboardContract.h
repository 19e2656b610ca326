#pragma once

#include "base/Task.h"
#include "platform/Pasteboard.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stop_token>
#include <string>
#include <string_view>

namespace lumiwren::testing {

inline Bytes bytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

/// What every pasteboard does. `World` has a pasteboard(), and otherPuts(contents), by which another
/// application takes it; no contents are an owner that goes.
template <typename World>
class PasteboardContract : public ::testing::Test {
protected:
  World world_;
};

TYPED_TEST_SUITE_P(PasteboardContract);

TYPED_TEST_P(PasteboardContract, IsEmptyWithoutAnOwner) {
  auto &pasteboard = this->world_.pasteboard();
  EXPECT_EQ(pasteboard.contents({}), PasteboardContents());
  EXPECT_EQ(pasteboard.string({}), std::nullopt);
}

TYPED_TEST_P(PasteboardContract, ReadsEveryTypeInTheOwnersOrder) {
  const PasteboardContents contents{{"text/html", bytesOf("<b>b</b>")},
                                    {"UTF8_STRING", bytesOf("b")},
                                    {"image/png", bytesOf(std::string("\0\xFF\n", 3))},
                                    {"application/x-nothing", {}},
                                    {"TEXT", bytesOf("b"), "UTF8_STRING"},
                                    {"application/x-numbers", bytesOf("12345678"), "INTEGER", 4}};
  this->world_.otherPuts(contents);
  EXPECT_EQ(this->world_.pasteboard().contents({}), contents);
}

TYPED_TEST_P(PasteboardContract, GivesBackWhatWasPutThere) {
  const PasteboardContents contents{{"application/x-first", bytesOf("1"), "STRING"},
                                    {"UTF8_STRING", bytesOf("text")},
                                    {"application/x-shorts", bytesOf("1234"), "INTEGER", 2}};
  auto &pasteboard = this->world_.pasteboard();
  pasteboard.setContents(contents, PasteboardLifetime::Lasting);
  EXPECT_EQ(pasteboard.contents({}), contents);
  EXPECT_EQ(pasteboard.string({}), "text");
}

TYPED_TEST_P(PasteboardContract, ReplacesAllOfWhatWasThere) {
  auto &pasteboard = this->world_.pasteboard();
  this->world_.otherPuts({{"UTF8_STRING", bytesOf("other")}, {"image/png", bytesOf("picture")}});
  const PasteboardContents contents{{"UTF8_STRING", bytesOf("ours")}};
  pasteboard.setContents(contents, PasteboardLifetime::Lasting);
  EXPECT_EQ(pasteboard.contents({}), contents);
  this->world_.otherPuts({{"image/png", bytesOf("theirs")}});
  EXPECT_EQ(pasteboard.contents({}), (PasteboardContents{{"image/png", bytesOf("theirs")}}));
}

TYPED_TEST_P(PasteboardContract, NoContentsEmptyIt) {
  auto &pasteboard = this->world_.pasteboard();
  this->world_.otherPuts({{"UTF8_STRING", bytesOf("other")}});
  pasteboard.setContents({}, PasteboardLifetime::Lasting);
  EXPECT_EQ(pasteboard.contents({}), PasteboardContents());
  pasteboard.setString("ours", PasteboardLifetime::Lasting);
  pasteboard.setContents({}, PasteboardLifetime::Lasting);
  EXPECT_EQ(pasteboard.contents({}), PasteboardContents());
}

TYPED_TEST_P(PasteboardContract, ChangeCountGrowsWithEveryNewOwnerAndWithNothingElse) {
  auto &pasteboard = this->world_.pasteboard();
  const auto atFirst = pasteboard.changeCount();
  this->world_.otherPuts({{"UTF8_STRING", bytesOf("one")}});
  const auto afterOther = pasteboard.changeCount();
  EXPECT_GT(afterOther, atFirst);
  (void)pasteboard.contents({});
  (void)pasteboard.string({});
  EXPECT_EQ(pasteboard.changeCount(), afterOther);
  pasteboard.setString("two", PasteboardLifetime::Temporary);
  const auto afterOurs = pasteboard.changeCount();
  EXPECT_GT(afterOurs, afterOther);
  pasteboard.setString("two", PasteboardLifetime::Lasting);
  const auto afterTheSame = pasteboard.changeCount();
  EXPECT_GT(afterTheSame, afterOurs);
  pasteboard.setContents({}, PasteboardLifetime::Lasting);
  const auto afterEmptying = pasteboard.changeCount();
  EXPECT_GT(afterEmptying, afterTheSame);
  this->world_.otherPuts({{"UTF8_STRING", bytesOf("three")}});
  const auto beforeTheOwnerGoes = pasteboard.changeCount();
  this->world_.otherPuts({});
  EXPECT_GT(pasteboard.changeCount(), beforeTheOwnerGoes);
}

TYPED_TEST_P(PasteboardContract, ATextIsThereUnderEveryNameOfPlainText) {
  auto &pasteboard = this->world_.pasteboard();
  pasteboard.setString("grün", PasteboardLifetime::Temporary);
  EXPECT_EQ(pasteboard.string({}), "grün");
  const auto contents = pasteboard.contents({});
  for (const char *type : {"UTF8_STRING", "text/plain;charset=utf-8", "STRING", "TEXT"}) {
    EXPECT_EQ(std::count_if(contents.begin(), contents.end(),
                            [type](const PasteboardItem &item) { return item.type == type; }),
              1)
        << type;
  }
}

TYPED_TEST_P(PasteboardContract, BlanksAreTextAndAPictureIsNone) {
  auto &pasteboard = this->world_.pasteboard();
  this->world_.otherPuts({{"UTF8_STRING", bytesOf("   ")}});
  EXPECT_EQ(pasteboard.string({}), "   ");
  this->world_.otherPuts({{"UTF8_STRING", {}}});
  EXPECT_EQ(pasteboard.string({}), "");
  this->world_.otherPuts({{"image/png", bytesOf("picture")}});
  EXPECT_EQ(pasteboard.string({}), std::nullopt);
}

TYPED_TEST_P(PasteboardContract, AStoppedReadIsCancelled) {
  this->world_.otherPuts({{"UTF8_STRING", bytesOf("text")}});
  std::stop_source stop;
  stop.request_stop();
  EXPECT_THROW((void)this->world_.pasteboard().contents(stop.get_token()), CancellationError);
  EXPECT_THROW((void)this->world_.pasteboard().string(stop.get_token()), CancellationError);
}

REGISTER_TYPED_TEST_SUITE_P(PasteboardContract, IsEmptyWithoutAnOwner, ReadsEveryTypeInTheOwnersOrder,
                            GivesBackWhatWasPutThere, ReplacesAllOfWhatWasThere, NoContentsEmptyIt,
                            ChangeCountGrowsWithEveryNewOwnerAndWithNothingElse,
                            ATextIsThereUnderEveryNameOfPlainText, BlanksAreTextAndAPictureIsNone,
                            AStoppedReadIsCancelled);

}  // namespace lumiwren::testing
