#include "platform/storage/SecretSession.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

namespace lumiwren {
namespace {

using namespace std::chrono_literals;

constexpr auto appService = "com.lumiwren.app";
constexpr auto keyAccount = "openai-api-key";

std::optional<std::string> read(SecretStore &store) {
  const auto secret = store.copyMatching(appService, keyAccount);
  return secret ? std::optional<std::string>(secret->reveal()) : std::nullopt;
}

SecretStatus add(SecretStore &store, const std::string &secret) {
  return store.add(appService, keyAccount, Secret::copyOf(secret));
}

template <typename Act>
std::chrono::steady_clock::duration durationOf(Act act) {
  const auto begin = std::chrono::steady_clock::now();
  act();
  return std::chrono::steady_clock::now() - begin;
}

std::size_t threadCount() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto &thread : std::filesystem::directory_iterator("/proc/self/task")) {
    ++count;
  }
  return count;
}

// Where a limit must not be what ends the operation, it is longer than the test may take.
constexpr auto never = 1h;

class LibsecretSecretStoreTest : public ::testing::Test {
protected:
  testing::SecretSession session_;
};

TEST_F(LibsecretSecretStoreTest, FindsWhatSecretToolHasStored) {
  session_.startKeyring();
  session_.storeWithTool("sk-by-hand", {"service", appService, "account", keyAccount});
  testing::StoreOfSession store;
  EXPECT_EQ(read(store), "sk-by-hand");
}

TEST_F(LibsecretSecretStoreTest, SecretToolFindsWhatItHasStored) {
  session_.startKeyring();
  testing::StoreOfSession store;
  add(store, "sk-abc");
  EXPECT_EQ(session_.secretTool({"lookup", "service", appService, "account", keyAccount}), "sk-abc\n");
  EXPECT_EQ(session_.itemCount(appService, keyAccount), 1U);
}

TEST_F(LibsecretSecretStoreTest, AddingAgainReplacesTheItem) {
  session_.startKeyring();
  testing::StoreOfSession store;
  add(store, "old");
  add(store, "new");
  EXPECT_EQ(session_.itemCount(appService, keyAccount), 1U);
}

TEST_F(LibsecretSecretStoreTest, RemovesEveryMatchingItemWhoeverHasStoredIt) {
  session_.startKeyring();
  session_.storeWithTool("theirs", {"service", appService, "account", keyAccount});
  session_.storeWithTool("more", {"service", appService, "account", keyAccount, "note", "x"});
  session_.storeWithTool("other", {"service", appService, "account", "other"});
  testing::StoreOfSession store;
  add(store, "ours");
  ASSERT_EQ(session_.itemCount(appService, keyAccount), 3U);
  EXPECT_EQ(store.remove(appService, keyAccount), SecretStatus::Success);
  EXPECT_EQ(session_.itemCount(appService, keyAccount), 0U);
  EXPECT_EQ(session_.itemCount(appService, "other"), 1U);
}

TEST_F(LibsecretSecretStoreTest, ASecretThatIsSomewhereElseThanTheLastTimeIsFound) {
  session_.startKeyring();
  testing::StoreOfSession store({never, never});
  add(store, "first");
  EXPECT_EQ(read(store), "first");
  session_.secretTool({"clear", "service", appService, "account", keyAccount});
  EXPECT_EQ(read(store), std::nullopt);
  session_.storeWithTool("other", {"service", appService, "account", "other"});
  session_.storeWithTool("second", {"service", appService, "account", keyAccount});
  EXPECT_EQ(read(store), "second");
  EXPECT_EQ(read(store), "second");
}

TEST_F(LibsecretSecretStoreTest, ServesThreadsWithoutALoopAtTheSameTime) {
  session_.startKeyring();
  testing::StoreOfSession store;
  add(store, "sk-abc");
  std::array<std::optional<std::string>, 4> found;
  {
    std::vector<std::jthread> threads;
    for (auto &secret : found) {
      threads.emplace_back([&] {
        for (int count = 0; count < 10; ++count) {
          secret = read(store);
        }
      });
    }
  }
  for (const auto &secret : found) {
    EXPECT_EQ(secret, "sk-abc");
  }
}

TEST_F(LibsecretSecretStoreTest, FindsAServiceThatIsRestartedBetweenCalls) {
  session_.startKeyring();
  testing::StoreOfSession store({never, never});
  add(store, "sk-abc");
  session_.killService();
  session_.startKeyring();
  EXPECT_EQ(read(store), "sk-abc");
  session_.killService();
  session_.startKeyring();
  EXPECT_EQ(add(store, "sk-def"), SecretStatus::Success);
  session_.killService();
  EXPECT_EQ(read(store), std::nullopt);
  session_.startKeyring();
  EXPECT_EQ(store.remove(appService, keyAccount), SecretStatus::Success);
}

TEST_F(LibsecretSecretStoreTest, SurvivesTheEndOfTheBusAndFindsTheNextOne) {
  session_.startKeyring();
  testing::StoreOfSession store({never, never});
  add(store, "sk-abc");
  session_.killBus();
  EXPECT_EQ(read(store), std::nullopt);

  testing::SecretSession next;
  next.startKeyring();
  EXPECT_EQ(read(store), std::nullopt);
  EXPECT_EQ(add(store, "sk-def"), SecretStatus::Success);
  EXPECT_EQ(read(store), "sk-def");
}

TEST_F(LibsecretSecretStoreTest, WithoutAServiceEveryOperationFailsAtOnce) {
  testing::StoreOfSession store({never, never});
  EXPECT_EQ(read(store), std::nullopt);
  EXPECT_FALSE(store.contains(appService, keyAccount));
  EXPECT_EQ(add(store, "sk-abc"), SecretStatus::Failure);
  EXPECT_EQ(store.remove(appService, keyAccount), SecretStatus::Failure);

  session_.startKeyring();
  EXPECT_EQ(add(store, "sk-abc"), SecretStatus::Success);
}

TEST_F(LibsecretSecretStoreTest, WithoutABusEveryOperationFailsAtOnce) {
  testing::StoreOfSession store({never, never});
  const auto expectFailure = [&] {
    EXPECT_EQ(read(store), std::nullopt);
    EXPECT_EQ(add(store, "sk-abc"), SecretStatus::Failure);
    EXPECT_EQ(store.remove(appService, keyAccount), SecretStatus::Failure);
  };
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  expectFailure();
  ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
  expectFailure();
}

TEST_F(LibsecretSecretStoreTest, ASilentServiceIsWaitedForNoLongerThanTheLimit) {
  session_.startService("silent");
  testing::StoreOfSession store({.answers = 300ms, .prompt = never});
  EXPECT_GE(durationOf([&] { EXPECT_EQ(read(store), std::nullopt); }), 300ms);
  // The bus's own limit is 25 s; its timers are coarse.
  EXPECT_LT(durationOf([&] { EXPECT_FALSE(store.contains(appService, keyAccount)); }), 10s);
  EXPECT_GE(durationOf([&] { EXPECT_EQ(add(store, "sk-abc"), SecretStatus::Failure); }), 300ms);
  EXPECT_GE(durationOf([&] { EXPECT_EQ(store.remove(appService, keyAccount), SecretStatus::Failure); }),
            300ms);

  session_.killService();
  session_.startKeyring();
  EXPECT_EQ(add(store, "sk-abc"), SecretStatus::Success);
}

TEST_F(LibsecretSecretStoreTest, AServiceThatIsSilentInsteadOfPromptingHasTheShorterLimit) {
  session_.startService("unlock-silent");
  testing::StoreOfSession store({.answers = 300ms, .prompt = never});
  EXPECT_EQ(read(store), std::nullopt);
  EXPECT_EQ(store.remove(appService, keyAccount), SecretStatus::Failure);
}

TEST_F(LibsecretSecretStoreTest, ALockedItemIsReadWhenTheUserUnlocksIt) {
  session_.startService("unlocked");
  testing::StoreOfSession store({never, never});
  EXPECT_EQ(read(store), "sk-unlocked");
  EXPECT_EQ(session_.nextEvent(), "prompt");
}

TEST_F(LibsecretSecretStoreTest, ToLookForALockedItemAsksNobody) {
  session_.startService("ignored");
  // A prompt would be waited for.
  testing::StoreOfSession store({never, never});
  EXPECT_TRUE(store.contains(appService, keyAccount));
}

TEST_F(LibsecretSecretStoreTest, ADismissedPromptIsNoSecretAndIsNotShownAgain) {
  session_.startService("dismissed");
  testing::StoreOfSession store({never, never});
  EXPECT_EQ(read(store), std::nullopt);
  EXPECT_EQ(session_.nextEvent(), "prompt");
  EXPECT_EQ(store.remove(appService, keyAccount), SecretStatus::Failure);
  EXPECT_EQ(session_.nextEvent(), "prompt");
  // Had a prompt been shown twice, that would come before this one.
  session_.killService();
  session_.startService("unlocked");
  EXPECT_EQ(read(store), "sk-unlocked");
  EXPECT_EQ(session_.nextEvent(), "prompt");
}

TEST_F(LibsecretSecretStoreTest, APromptThatNobodyAnswersIsWithdrawn) {
  session_.startService("ignored");
  testing::StoreOfSession store({.answers = never, .prompt = 300ms});
  EXPECT_EQ(read(store), std::nullopt);
  EXPECT_EQ(session_.nextEvent(), "prompt");
  EXPECT_EQ(session_.nextEvent(), "withdrawn");
}

TEST_F(LibsecretSecretStoreTest, APromptThatCannotBeWithdrawnIsLeftBehindWithoutAThread) {
  session_.startService("stuck");
  testing::StoreOfSession store({.answers = never, .prompt = 100ms});
  EXPECT_EQ(read(store), std::nullopt);
  const auto threads = threadCount();
  for (int count = 0; count < 3; ++count) {
    EXPECT_EQ(read(store), std::nullopt);
  }
  EXPECT_LE(threadCount(), threads);

  session_.killService();
  session_.startService("unlocked");
  EXPECT_EQ(read(store), "sk-unlocked");
}

TEST_F(LibsecretSecretStoreTest, ALockedKeyringThatCannotAskGivesNothingAndLosesNothing) {
  session_.startKeyring();
  testing::StoreOfSession store({never, never});
  add(store, "sk-abc");
  session_.lockKeyring();
  EXPECT_EQ(read(store), std::nullopt);
  EXPECT_EQ(add(store, "sk-def"), SecretStatus::Failure);
  EXPECT_EQ(store.remove(appService, keyAccount), SecretStatus::Failure);

  session_.killService();
  session_.startKeyring();
  EXPECT_EQ(read(store), "sk-abc");
}

TEST_F(LibsecretSecretStoreTest, MakingAndDroppingAStoreTouchesNothing) {
  const auto threads = threadCount();
  { const testing::StoreOfSession store; }
  EXPECT_EQ(threadCount(), threads);
}

}  // namespace
}  // namespace lumiwren
