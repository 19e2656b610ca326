#include "ai/KeychainQueue.h"

#include "base/Task.h"
#include "platform/testing/FakeSecretStore.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace lumiwren {
namespace {

using Operation = testing::FakeSecretStore::Operation;

class KeychainQueueTest : public ::testing::Test {
protected:
  ~KeychainQueueTest() override {
    store_.setSilent(false);
    EXPECT_TRUE(Task::endAll(std::chrono::seconds(10)));
  }

  /// Runs the main queue until this many results have come.
  void waitForResults(std::size_t count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (results_.size() < count && std::chrono::steady_clock::now() < end) {
      mainQueue_.runPending();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_EQ(results_.size(), count);
  }
  void get() {
    queue_.getAPIKey([this](const std::optional<Secret> &key) {
      results_.push_back(key ? "got " + std::string(key->reveal()) : "got none");
    });
  }
  void save(const std::string &key) {
    queue_.saveAPIKey(Secret::copyOf(key),
                      [this](bool saved) { results_.push_back(saved ? "saved" : "refused"); });
  }
  void remove() {
    queue_.deleteAPIKey([this] { results_.push_back("deleted"); });
  }

  testing::FakeSecretStore store_;
  KeychainManager keychain_{store_};
  MainQueue mainQueue_;
  KeychainQueue queue_{keychain_, mainQueue_};
  std::vector<std::string> results_;
};

TEST_F(KeychainQueueTest, OperationsHappenInTheOrderInWhichTheyAreAskedFor) {
  std::vector<std::string> expected;
  for (int round = 0; round < 20; ++round) {
    const std::string key = "key " + std::to_string(round);
    save(key);
    get();
    remove();
    get();
    expected.insert(expected.end(), {"saved", "got " + key, "deleted", "got none"});
  }
  waitForResults(expected.size());
  EXPECT_EQ(results_, expected);
}

TEST_F(KeychainQueueTest, ASilentStoreHoldsUpNobodyButThoseWhoAsk) {
  store_.setSilent(true);
  get();
  save("key");
  get();
  store_.waitForCallers();
  mainQueue_.runPending();
  EXPECT_TRUE(results_.empty());
  EXPECT_EQ(store_.operations(), std::vector{Operation::CopyMatching});
  store_.setSilent(false);
  waitForResults(3);
  EXPECT_EQ(results_, (std::vector<std::string>{"got none", "saved", "got key"}));
}

TEST_F(KeychainQueueTest, KnowsFromEachResultWhetherThereIsAKey) {
  int changes = 0;
  const Handle observation = queue_.observe([&] { ++changes; });
  EXPECT_FALSE(queue_.holdsKey());
  get();
  waitForResults(1);
  EXPECT_EQ(changes, 0);
  save("key");
  waitForResults(2);
  EXPECT_TRUE(queue_.holdsKey());
  EXPECT_EQ(changes, 1);
  save("other");
  waitForResults(3);
  EXPECT_EQ(changes, 1);
  store_.setRemovesFail(true);
  remove();
  waitForResults(4);
  EXPECT_TRUE(queue_.holdsKey()) << "a refused removal leaves the key";
  store_.setRemovesFail(false);
  remove();
  waitForResults(5);
  EXPECT_FALSE(queue_.holdsKey());
  EXPECT_EQ(changes, 2);
}

TEST_F(KeychainQueueTest, ARefusedKeyIsToldAndClaimsNothing) {
  store_.setAddsFail(true);
  save("key");
  waitForResults(1);
  EXPECT_EQ(results_.back(), "refused");
  EXPECT_FALSE(queue_.holdsKey());
}

TEST_F(KeychainQueueTest, ASequenceTakesItsPlaceAmongTheOthers) {
  store_.setSilent(true);
  get();
  const auto turn = queue_.takeTurn();
  get();
  Task::start([&, turn](const std::stop_token &) {
    queue_.inTurn(turn, [](KeychainManager &keychain) {
      return KeychainQueue::Outcome{keychain.saveAPIKey(Secret::copyOf("between"))};
    });
  }).detach();
  store_.setSilent(false);
  waitForResults(2);
  EXPECT_EQ(results_, (std::vector<std::string>{"got none", "got between"}));
  EXPECT_TRUE(queue_.holdsKey());
}

}  // namespace
}  // namespace lumiwren
