#include "platform/linux/x11/selection/SelectionText.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace lumiwren {
namespace {

struct DecodingCase {
  const char *name;
  const char *encoding;
  std::string bytes;
  std::optional<std::string> text;
};

class SelectionTextDecoding : public ::testing::TestWithParam<DecodingCase> {};

TEST_P(SelectionTextDecoding, IsUTF8) {
  const auto &[name, encoding, bytes, text] = GetParam();
  EXPECT_EQ(decodeSelectionText(encoding, {bytes.begin(), bytes.end()}), text);
}

INSTANTIATE_TEST_SUITE_P(
    All, SelectionTextDecoding,
    ::testing::Values(DecodingCase{"UTF8", "UTF8_STRING", "grün 日本", "grün 日本"},
                      DecodingCase{"MediaType", "text/plain;charset=utf-8", "grün", "grün"},
                      DecodingCase{"Empty", "UTF8_STRING", "", ""},
                      DecodingCase{"EndMark", "UTF8_STRING", std::string("text\0", 5), "text"},
                      DecodingCase{"BrokenUTF8", "UTF8_STRING", "a\xC3", "a\xEF\xBF\xBD"},
                      DecodingCase{"Surrogate", "UTF8_STRING", "\xED\xA0\x80",
                                   "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
                      DecodingCase{"Latin1", "STRING", "gr\xFCn \xA4", "grün ¤"},
                      DecodingCase{"CString", "C_STRING", "gr\xFCn", "grün"},
                      DecodingCase{"CompoundLatin1", "COMPOUND_TEXT", "gr\xFCn", "grün"},
                      DecodingCase{"CompoundUTF8", "COMPOUND_TEXT", "\xFC \x1B%G日本\x1B%@ \xFC", "ü 日本 ü"},
                      DecodingCase{"CompoundUTF8Unended", "COMPOUND_TEXT", "\x1B%G日本", "日本"},
                      DecodingCase{"CompoundOther", "COMPOUND_TEXT", "\x1B$(B\x46\x7C", std::nullopt},
                      DecodingCase{"NoText", "image/png", "\x89PNG", std::nullopt}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(SelectionText, PlainTextHasEveryNameOnce) {
  const auto contents = plainTextContents("ü日\xFF");
  const PasteboardContents expected{
      {"UTF8_STRING", {0xC3, 0xBC, 0xE6, 0x97, 0xA5, 0xFF}},
      {"text/plain;charset=utf-8", {0xC3, 0xBC, 0xE6, 0x97, 0xA5, 0xFF}},
      {"STRING", {0xFC, '?', '?'}},
      {"TEXT", {0xC3, 0xBC, 0xE6, 0x97, 0xA5, 0xFF}, "UTF8_STRING"},
      {"text/plain", {0xC3, 0xBC, 0xE6, 0x97, 0xA5, 0xFF}},
  };
  EXPECT_EQ(contents, expected);
}

}  // namespace
}  // namespace lumiwren
