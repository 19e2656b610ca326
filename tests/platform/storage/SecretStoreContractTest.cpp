// What holds for every implementation of SecretStore.

#include "platform/storage/SecretSession.h"
#include "platform/testing/FakeSecretStore.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

struct Fake {
  testing::FakeSecretStore store;
};

struct Real {
  Real() { session.startKeyring(); }
  testing::SecretSession session;
  testing::StoreOfSession store;
};

template <typename Subject>
class SecretStoreContractTest : public ::testing::Test {
protected:
  SecretStore &store() { return subject_.store; }
  std::optional<std::string> read(std::string_view account = "account") {
    const auto secret = store().copyMatching("service", account);
    return secret ? std::optional<std::string>(secret->reveal()) : std::nullopt;
  }
  SecretStatus add(std::string_view secret, std::string_view account = "account") {
    return store().add("service", account, Secret::copyOf(secret));
  }

private:
  Subject subject_;
};

using Subjects = ::testing::Types<Fake, Real>;
TYPED_TEST_SUITE(SecretStoreContractTest, Subjects);

TYPED_TEST(SecretStoreContractTest, InAnEmptyStoreThereIsNothingToReadOrRemove) {
  EXPECT_EQ(this->read(), std::nullopt);
  EXPECT_EQ(this->store().remove("service", "account"), SecretStatus::ItemNotFound);
}

TYPED_TEST(SecretStoreContractTest, ASecretReadsBackByteForByte) {
  for (const auto &secret : {std::string("sk-abc"), std::string(), std::string(" line\n"),
                             std::string("é\U0001F426"), std::string("caf\xE9"), std::string(10'000, 'x')}) {
    EXPECT_EQ(this->add(secret), SecretStatus::Success);
    EXPECT_EQ(this->read(), secret);
  }
}

TYPED_TEST(SecretStoreContractTest, ContainsWhatWasAddedUntilItIsRemoved) {
  EXPECT_FALSE(this->store().contains("service", "account"));
  this->add("");
  EXPECT_TRUE(this->store().contains("service", "account"));
  EXPECT_FALSE(this->store().contains("service", "another"));
  this->store().remove("service", "account");
  EXPECT_FALSE(this->store().contains("service", "account"));
}

TYPED_TEST(SecretStoreContractTest, RemovingTwiceFindsNothingTheSecondTime) {
  this->add("secret");
  EXPECT_EQ(this->store().remove("service", "account"), SecretStatus::Success);
  EXPECT_EQ(this->read(), std::nullopt);
  EXPECT_EQ(this->store().remove("service", "account"), SecretStatus::ItemNotFound);
}

TYPED_TEST(SecretStoreContractTest, AnotherAccountOrServiceDoesNotMatch) {
  this->add("one", "first");
  this->add("two", "second");
  EXPECT_EQ(this->read("third"), std::nullopt);
  EXPECT_FALSE(this->store().copyMatching("another", "first"));
  EXPECT_EQ(this->store().remove("service", "third"), SecretStatus::ItemNotFound);
  EXPECT_EQ(this->store().remove("service", "first"), SecretStatus::Success);
  EXPECT_EQ(this->read("first"), std::nullopt);
  EXPECT_EQ(this->read("second"), "two");
}

}  // namespace
}  // namespace lumiwren
