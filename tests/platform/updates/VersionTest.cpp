#include "platform/linux/updates/Version.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace lumiwren {
namespace {

TEST(Version, IsNumbersWithDotsAndPerhapsASuffix) {
  for (const auto *const text : {"0", "1.2", "1.10.3", "2024.11", "1.0-rc.1", "1.0b2", "1.0~beta",
                                 "1.0+build.5", "1.0-alpha-2+x", "00012.1"}) {
    EXPECT_TRUE(isVersion(text)) << text;
  }
  for (const auto *const text :
       {"", "v1.2", ".1", "1.", "1..2", "1.beta", "Unknown", "1.0 beta", "1/2", "1.0\n", "-1"}) {
    EXPECT_FALSE(isVersion(text)) << text;
  }
  EXPECT_TRUE(isVersion(std::string(64, '1')));
  EXPECT_FALSE(isVersion(std::string(65, '1')));
}

TEST(Version, TheOrderIsThatOfTheNumbersWithPreReleasesBeforeTheirRelease) {
  const std::vector<std::string> ascending{"0.1",
                                           "0.1.1",
                                           "0.9",
                                           "0.10",
                                           "1.0-alpha",
                                           "1.0-alpha.1",
                                           "1.0-alpha.beta",
                                           "1.0-beta",
                                           "1.0-beta.2",
                                           "1.0-beta.10",
                                           "1.0-rc.1",
                                           "1.0",
                                           "1.0.1-rc1",
                                           "1.0.1",
                                           "1.9",
                                           "1.10",
                                           "2",
                                           "10",
                                           "99999999999999999999999",
                                           "100000000000000000000000"};
  const auto before = [](const std::string &one, const std::string &other) {
    return compareVersions(one, other) < 0;
  };
  for (std::size_t one = 0; one < ascending.size(); ++one) {
    EXPECT_TRUE(isVersion(ascending[one])) << ascending[one];
    for (std::size_t other = one + 1; other < ascending.size(); ++other) {
      EXPECT_TRUE(before(ascending[one], ascending[other])) << ascending[one] << " " << ascending[other];
      EXPECT_FALSE(before(ascending[other], ascending[one])) << ascending[other] << " " << ascending[one];
    }
  }
}

TEST(Version, DifferentSpellingsOfOneVersionAreEquivalent) {
  const std::vector<std::pair<const char *, const char *>> pairs{
      {"1", "1.0"},       {"1.0", "1.0.0.0"},        {"1.02", "1.2"},
      {"1.0+a", "1.0+b"}, {"1.0-rc1", "1.0.0~rc.1"}, {"0", "0.0"}};
  for (const auto &[one, other] : pairs) {
    EXPECT_TRUE(compareVersions(one, other) == 0) << one << " " << other;
    EXPECT_TRUE(compareVersions(other, one) == 0) << other << " " << one;
  }
}

}  // namespace
}  // namespace lumiwren
