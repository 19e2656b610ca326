// What holds for every implementation of UserDefaults.

#include "platform/linux/JSONUserDefaults.h"
#include "platform/testing/FakeUserDefaults.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>

namespace lumiwren {
namespace {

struct Fake {
  testing::FakeUserDefaults defaults;
};

struct Real {
  testing::TemporaryFolder folder;
  JSONUserDefaults defaults{folder.path() / "defaults.json"};
};

template <typename Subject>
class UserDefaultsContractTest : public ::testing::Test {
protected:
  UserDefaults &defaults() { return subject_.defaults; }

private:
  Subject subject_;
};

using Subjects = ::testing::Types<Fake, Real>;
TYPED_TEST_SUITE(UserDefaultsContractTest, Subjects);

TYPED_TEST(UserDefaultsContractTest, WhatIsNotThereReadsAsFalseNothingAndNone) {
  EXPECT_FALSE(this->defaults().boolForKey("key"));
  EXPECT_FALSE(this->defaults().dataForKey("key"));
  EXPECT_TRUE(this->defaults().stringArrayForKey("key").empty());
}

TYPED_TEST(UserDefaultsContractTest, ABooleanReadsBack) {
  this->defaults().setBool("key", true);
  EXPECT_TRUE(this->defaults().boolForKey("key"));
  this->defaults().setBool("key", false);
  EXPECT_FALSE(this->defaults().boolForKey("key"));
}

TYPED_TEST(UserDefaultsContractTest, DataReadsBackByteForByte) {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) {
    everyByte.push_back(static_cast<char>(byte));
  }
  for (const auto &bytes :
       {std::string(), std::string("text"), std::string("\0a\n", 3), std::string("é\U0001F426"),
        std::string("\xFF"), std::string("\xED\xA0\x80"), everyByte, std::string("{\"base64\": 1}")}) {
    this->defaults().setData("key", bytes);
    EXPECT_EQ(this->defaults().dataForKey("key"), bytes);
  }
}

TYPED_TEST(UserDefaultsContractTest, ValuesOfAnotherTypeReadAsNotThere) {
  this->defaults().setBool("bool", true);
  this->defaults().setData("data", "true");
  EXPECT_FALSE(this->defaults().dataForKey("bool"));
  EXPECT_FALSE(this->defaults().boolForKey("data"));
  EXPECT_TRUE(this->defaults().stringArrayForKey("data").empty());
}

TYPED_TEST(UserDefaultsContractTest, KeysAreIndependent) {
  this->defaults().setBool("a", true);
  this->defaults().setData("b", "text");
  this->defaults().setBool("hasUpdatedDefaultPrompts_v1.4", true);
  EXPECT_TRUE(this->defaults().boolForKey("a"));
  EXPECT_EQ(this->defaults().dataForKey("b"), "text");
  EXPECT_TRUE(this->defaults().boolForKey("hasUpdatedDefaultPrompts_v1.4"));
}

TYPED_TEST(UserDefaultsContractTest, AValueMayChangeItsType) {
  this->defaults().setBool("key", true);
  this->defaults().setData("key", "text");
  EXPECT_EQ(this->defaults().dataForKey("key"), "text");
  EXPECT_FALSE(this->defaults().boolForKey("key"));
}

}  // namespace
}  // namespace lumiwren
