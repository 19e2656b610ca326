#include "platform/linux/updates/EdSignature.h"

#include "base/Base64.h"

#include <gtest/gtest.h>

#include <string>

namespace lumiwren {
namespace {

std::string fromHex(std::string_view digits) {
  std::string bytes;
  for (; !digits.empty(); digits.remove_prefix(2)) {
    bytes += static_cast<char>(std::stoi(std::string(digits.substr(0, 2)), nullptr, 16));
  }
  return bytes;
}

// RFC 8032, section 7.1, test 3.
const std::string key = fromHex("fc51cd8e6218a1a38da47ed00230f0580816ed13ba3303ac5deb911548908025");
const std::string message = fromHex("af82");
const std::string signature = fromHex(
    "6291d657deec24024827e69c3abe01a30ce548a284743a445e3680d7db5ac3ac"
    "18ff9b538d16f290ae67f760984dc6594a7c15e9716ed28dc027beceea1ec40a");

TEST(EdSignature, VerifiesTheVectorOfItsStandard) {
  const auto publicKey = EdPublicKey::fromBase64(encodeBase64(key));
  ASSERT_TRUE(publicKey);
  EXPECT_TRUE(publicKey->verifies(message, encodeBase64(signature)));
}

TEST(EdSignature, RefusesOtherBytesAndOtherSignatures) {
  const auto publicKey = EdPublicKey::fromBase64(encodeBase64(key));
  ASSERT_TRUE(publicKey);
  EXPECT_FALSE(publicKey->verifies(fromHex("af83"), encodeBase64(signature)));
  EXPECT_FALSE(publicKey->verifies("", encodeBase64(signature)));
  for (std::size_t at = 0; at < signature.size(); ++at) {
    auto changed = signature;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    EXPECT_FALSE(publicKey->verifies(message, encodeBase64(changed))) << at;
  }
  for (const auto &other : {std::string(), std::string("!"), encodeBase64(signature.substr(1)),
                            encodeBase64(signature + "x"), encodeBase64(std::string(64, '\0'))}) {
    EXPECT_FALSE(publicKey->verifies(message, other)) << other;
  }
}

TEST(EdSignature, AKeyIsThirtyTwoBytesOfBase64) {
  EXPECT_FALSE(EdPublicKey::fromBase64(""));
  EXPECT_FALSE(EdPublicKey::fromBase64("not base64"));
  EXPECT_FALSE(EdPublicKey::fromBase64(encodeBase64(key.substr(1))));
  EXPECT_FALSE(EdPublicKey::fromBase64(encodeBase64(key + "x")));
}

TEST(EdSignature, AKeyOfSmallOrderVerifiesNothing) {
  // With such a key one signature would fit every message.
  std::string smallOrder(32, '\0');
  smallOrder[0] = 1;
  const auto publicKey = EdPublicKey::fromBase64(encodeBase64(smallOrder));
  ASSERT_TRUE(publicKey);
  EXPECT_FALSE(publicKey->verifies(message, encodeBase64(smallOrder + std::string(32, '\0'))));
}

}  // namespace
}  // namespace lumiwren
