#include "ai/KeychainManager.h"

#include "platform/storage/SecretSession.h"
#include "platform/testing/FakeSecretStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace lumiwren {
namespace {

using ::testing::ElementsAre;
using testing::FakeSecretStore;
using ::testing::IsEmpty;
using Operation = FakeSecretStore::Operation;

struct FakeKeyring {
  static std::size_t itemCount(const FakeKeyring &fake) { return fake.store.itemCount(); }
  FakeSecretStore store;
};

struct RealKeyring {
  RealKeyring() { session.startKeyring(); }
  static std::size_t itemCount(const RealKeyring &) {
    return testing::SecretSession::itemCount("com.lumiwren.app", "openai-api-key");
  }
  testing::SecretSession session;
  testing::StoreOfSession store;
};

template <typename Subject>
class KeychainManagerTest : public ::testing::Test {
protected:
  std::optional<std::string> read() {
    const auto key = manager_.getAPIKey();
    return key ? std::optional<std::string>(key->reveal()) : std::nullopt;
  }
  bool save(std::string_view key) { return manager_.saveAPIKey(Secret::copyOf(key)); }
  std::size_t itemCount() { return Subject::itemCount(subject_); }

  Subject subject_;
  KeychainManager manager_{subject_.store};
};

using Keyrings = ::testing::Types<FakeKeyring, RealKeyring>;
TYPED_TEST_SUITE(KeychainManagerTest, Keyrings);

TYPED_TEST(KeychainManagerTest, ThereIsNoKeyAtFirst) {
  EXPECT_EQ(this->read(), std::nullopt);
}

TYPED_TEST(KeychainManagerTest, KnowsWhetherThereIsAKey) {
  EXPECT_FALSE(this->manager_.hasAPIKey());
  this->save("");
  EXPECT_TRUE(this->manager_.hasAPIKey());
  this->manager_.deleteAPIKey();
  EXPECT_FALSE(this->manager_.hasAPIKey());
}

TYPED_TEST(KeychainManagerTest, AKeyReadsBackAsItWasSaved) {
  for (const auto *key : {"sk-abc", "", "  sk with blanks \n", "ключ"}) {
    EXPECT_TRUE(this->save(key));
    EXPECT_EQ(this->read(), key);
  }
}

TYPED_TEST(KeychainManagerTest, ASecondKeyReplacesTheFirst) {
  this->save("old");
  this->save("new");
  EXPECT_EQ(this->read(), "new");
  EXPECT_EQ(this->itemCount(), 1U);
}

TYPED_TEST(KeychainManagerTest, DeletingTwiceSucceedsBothTimes) {
  this->save("sk-abc");
  EXPECT_TRUE(this->manager_.deleteAPIKey());
  EXPECT_EQ(this->read(), std::nullopt);
  EXPECT_TRUE(this->manager_.deleteAPIKey());
  EXPECT_EQ(this->itemCount(), 0U);
}

TYPED_TEST(KeychainManagerTest, AnItemOfAnotherAccountIsNoKeyAndStays) {
  this->subject_.store.add("com.lumiwren.app", "another", Secret::copyOf("other"));
  EXPECT_EQ(this->read(), std::nullopt);
  EXPECT_TRUE(this->manager_.deleteAPIKey());
  EXPECT_TRUE(this->subject_.store.copyMatching("com.lumiwren.app", "another"));
}

TYPED_TEST(KeychainManagerTest, AStoredValueThatIsNoValidUTF8IsNoKey) {
  this->subject_.store.add("com.lumiwren.app", "openai-api-key", Secret::copyOf("sk-\xFF"));
  EXPECT_EQ(this->read(), std::nullopt);
}

class RealKeychainManagerTest : public KeychainManagerTest<RealKeyring> {};

TEST_F(RealKeychainManagerTest, SavingReplacesAKeyThatTheUserHasStoredByHand) {
  subject_.session.storeWithTool("by-hand", {"service", "com.lumiwren.app", "account", "openai-api-key"});
  EXPECT_EQ(read(), "by-hand");
  EXPECT_TRUE(save("sk-abc"));
  EXPECT_EQ(read(), "sk-abc");
  EXPECT_EQ(itemCount(), 1U);
}

class FakeKeychainManagerTest : public KeychainManagerTest<FakeKeyring> {};

TEST_F(FakeKeychainManagerTest, SavingDeletesFirstAndThenAdds) {
  EXPECT_TRUE(save("sk-abc"));
  EXPECT_THAT(subject_.store.operations(), ElementsAre(Operation::Remove, Operation::Add));
}

TEST_F(FakeKeychainManagerTest, AKeyThatIsNoValidUTF8IsRefusedWithoutTouchingTheStore) {
  EXPECT_FALSE(save("sk-\xFF"));
  EXPECT_THAT(subject_.store.operations(), IsEmpty());
}

TEST_F(FakeKeychainManagerTest, AFailedAddLeavesNoKey) {
  save("old");
  subject_.store.setAddsFail(true);
  EXPECT_FALSE(save("new"));
  EXPECT_EQ(read(), std::nullopt);
}

TEST_F(FakeKeychainManagerTest, AFailedDeleteDoesNotKeepAKeyFromBeingSaved) {
  save("old");
  subject_.store.setRemovesFail(true);
  EXPECT_TRUE(save("new"));
  EXPECT_EQ(read(), "new");
  EXPECT_FALSE(manager_.deleteAPIKey());
}

TEST_F(FakeKeychainManagerTest, AFailedReadIsNoKey) {
  save("sk-abc");
  subject_.store.setReadsFail(true);
  EXPECT_EQ(read(), std::nullopt);
}

TEST_F(FakeKeychainManagerTest, AKeyThatIsBeingSavedByAnotherThreadIsOldMissingOrNew) {
  save("old");
  std::jthread saving([this] { save("new"); });
  for (int count = 0; count < 100; ++count) {
    EXPECT_THAT(read(), ::testing::AnyOf(std::nullopt, "old", "new"));
  }
}

}  // namespace
}  // namespace lumiwren
