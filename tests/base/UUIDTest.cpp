#include "base/UUID.h"

#include <gtest/gtest.h>

#include <set>

namespace lumiwren {
namespace {

TEST(UUIDTest, ReadsTheCanonicalFormInEitherCase) {
  const auto upper = UUID::parse("0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9");
  const auto mixed = UUID::parse("0a1b2c3D-4e5f-6071-8293-a4b5c6d7e8F9");
  ASSERT_TRUE(upper);
  EXPECT_EQ(upper, mixed);
  EXPECT_EQ(upper->bytes, (std::array<std::uint8_t, 16>{0x0A, 0x1B, 0x2C, 0x3D, 0x4E, 0x5F, 0x60, 0x71, 0x82,
                                                        0x93, 0xA4, 0xB5, 0xC6, 0xD7, 0xE8, 0xF9}));
  EXPECT_EQ(upper->toString(), "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9");
}

TEST(UUIDTest, ReadsNothingElse) {
  const std::string good = "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9";
  for (const auto &text :
       {std::string(), good.substr(1), good + "0", " " + good.substr(1), good.substr(0, 35) + " ",
        "{" + good + "}", "urn:uuid:" + good, std::string(36, '-'), std::string(36, '0'),
        std::string("0A1B2C3D4-E5F-6071-8293-A4B5C6D7E8F9"), std::string(36, '\0')}) {
    EXPECT_FALSE(UUID::parse(text)) << text;
  }
  for (std::size_t position = 0; position < good.size(); ++position) {
    for (const char wrong : {'g', 'G', '/', ':', '@', '`', '\0', '\xE9', '+', 'x'}) {
      auto text = good;
      text[position] = wrong;
      EXPECT_FALSE(UUID::parse(text)) << text;
    }
  }
}

TEST(UUIDTest, RandomOnesAreOfVersion4AndDiffer) {
  std::set<UUID> seen;
  for (int count = 0; count < 1000; ++count) {
    const auto uuid = UUID::random();
    EXPECT_TRUE(seen.insert(uuid).second);
    const auto text = uuid.toString();
    EXPECT_EQ(text[14], '4');
    EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos);
    EXPECT_EQ(UUID::parse(text), uuid);
  }
}

TEST(UUIDTest, OrderIsThatOfTheTextForm) {
  EXPECT_LT(*UUID::parse("00000000-0000-0000-0000-000000000001"),
            *UUID::parse("00000000-0000-0000-0000-000000000002"));
  EXPECT_LT(*UUID::parse("00000000-0000-0000-0000-0000000000FF"),
            *UUID::parse("F0000000-0000-0000-0000-000000000000"));
}

}  // namespace
}  // namespace lumiwren
