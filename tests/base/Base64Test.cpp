#include "base/Base64.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

TEST(Base64Test, WritesAndReadsTheTestVectorsOfRFC4648) {
  const std::pair<std::string, std::string> vectors[]{{"", ""},
                                                      {"f", "Zg=="},
                                                      {"fo", "Zm8="},
                                                      {"foo", "Zm9v"},
                                                      {"foob", "Zm9vYg=="},
                                                      {"fooba", "Zm9vYmE="},
                                                      {"foobar", "Zm9vYmFy"}};
  for (const auto &[bytes, text] : vectors) {
    EXPECT_EQ(encodeBase64(bytes), text);
    EXPECT_EQ(decodeBase64(text), bytes);
  }
}

TEST(Base64Test, EveryByteReadsBack) {
  std::string bytes;
  for (int count = 0; count < 300; ++count) {
    bytes.push_back(static_cast<char>(count));
    EXPECT_EQ(decodeBase64(encodeBase64(bytes)), bytes);
  }
  EXPECT_EQ(encodeBase64("\xFB\xFF\xBF"), "+/+/");
}

TEST(Base64Test, RefusesEveryOtherForm) {
  for (const auto *text : {"Z", "Zg", "Zg=", "Zm9", "Zm9vZ", "=", "==", "====", "Zg==Zg==", "Z===", "Zh==",
                           "Zm9=", "Zm 9v", "Zm9v\n", "-_-_", "Z=g=", "Zm9v===="}) {
    EXPECT_FALSE(decodeBase64(text)) << text;
  }
}

}  // namespace
}  // namespace lumiwren
