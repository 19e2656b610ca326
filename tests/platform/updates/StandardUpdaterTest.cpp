#include "platform/linux/updates/StandardUpdater.h"

#include "platform/linux/updates/Version.h"
#include "platform/updates/UpdaterTesting.h"

#include <gtest/gtest.h>

namespace lumiwren::testing {
namespace {

class StandardUpdaterTest : public UpdaterTest {
protected:
  /// What an asked-for check that fails says.
  std::string failure() {
    start().checkForUpdates();
    EXPECT_TRUE(comesTo("failed: "));
    EXPECT_TRUE(nothingWasUsed());
    return driver.stages.empty() ? std::string() : driver.stages.back();
  }
};

TEST_F(StandardUpdaterTest, FindsANewerVersionWithItsNotes) {
  serve({});
  auto &updater = start();
  EXPECT_TRUE(updater.canCheckForUpdates());
  updater.checkForUpdates();
  EXPECT_FALSE(updater.canCheckForUpdates());
  EXPECT_TRUE(driver.shows("checking"));
  EXPECT_TRUE(comesTo("found 2.0"));
  EXPECT_EQ(driver.offer.notes, "Better & faster");
  EXPECT_EQ(driver.occasion, Occasion::Asked);
  EXPECT_EQ(requestsOf("/package.deb"), 0U);
  driver.reply(Choice::RemindLater);
  EXPECT_TRUE(updater.canCheckForUpdates());
  EXPECT_EQ(driver.stages.size(), 2U);
  EXPECT_TRUE(nothingWasUsed());
}

TEST_F(StandardUpdaterTest, SaysThatTheRunningVersionIsTheNewest) {
  for (const auto *const version : {"1.0", "0.9", "1.0-rc.1", "1.0.0"}) {
    serve({.version = version});
    start().checkForUpdates();
    EXPECT_TRUE(comesTo("up to date 1.0")) << version;
  }
  EXPECT_TRUE(nothingWasUsed());
}

TEST_F(StandardUpdaterTest, ACheckForWhichNothingIsConfiguredCannotBeMade) {
  const auto complete = bundle.strings;
  const std::vector<std::pair<const char *, std::string>> defects{
      {"SUFeedURL", ""},
      {"SUFeedURL", "http://localhost/feed.xml"},
      {"SUFeedURL", "file:///feed.xml"},
      {"SUFeedURL", "https://"},
      {"SUPublicEDKey", ""},
      {"SUPublicEDKey", "bm8ga2V5"},
      {"CFBundleShortVersionString", ""},
      {"CFBundleShortVersionString", "Unknown"},
  };
  defaults.setData("SULastCheckTime", "0");
  for (const auto &[key, value] : defects) {
    bundle.strings = complete;
    bundle.strings[key] = value;
    auto &updater = start();
    EXPECT_FALSE(updater.canCheckForUpdates()) << key << value;
    updater.checkForUpdates();
    pass(seconds(1));
    bundle.strings.erase(key);
    EXPECT_FALSE(start().canCheckForUpdates()) << key;
    pass(seconds(1));
  }
  EXPECT_TRUE(driver.stages.empty());
  EXPECT_TRUE(server.requests().empty());
  EXPECT_EQ(mainQueue.nextDeadline(), std::nullopt);
}

TEST_F(StandardUpdaterTest, FailuresOfTheFeedAreTold) {
  EXPECT_EQ(failure(), "failed: The server answered with status 404.");
  answer("/feed.xml", [](Connection &connection) { connection.respond(200, "<rss><channel></rss>"); });
  EXPECT_EQ(failure(), "failed: The list of new versions cannot be read: mismatched tag in line 1.");
  answer("/feed.xml", [](Connection &connection) { connection.respond(200, ""); });
  EXPECT_EQ(failure(), "failed: The list of new versions cannot be read: no element found in line 1.");
  answer("/feed.xml", [](Connection &connection) {
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n<rss>");
    connection.close();
  });
  EXPECT_TRUE(failure().starts_with("failed: The connection to the server was lost: "));
  EXPECT_EQ(defaults.writeCount("SULastCheckTime"), 1U);
}

TEST_F(StandardUpdaterTest, AServerThatIsNotTrustedIsNotAsked) {
  const TestCertificate other;
  HTTPTestServer impostor([](Connection &connection) { connection.respond(200, "<rss/>"); },
                          other.serverContext());
  bundle.strings["SUFeedURL"] = impostor.url("/feed.xml");
  EXPECT_FALSE(failure().empty());
  EXPECT_TRUE(impostor.requests().empty());
}

TEST_F(StandardUpdaterTest, AFeedOfEntitiesIsRefused) {
  answer("/feed.xml", [](Connection &connection) {
    connection.respond(200,
                       "<!DOCTYPE rss [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;\">]>"
                       "<rss><channel>&b;</channel></rss>");
  });
  EXPECT_EQ(failure(), "failed: The list of new versions cannot be read: a document type in line 1.");
}

TEST_F(StandardUpdaterTest, OfAnEndlessFeedLittleIsRead) {
  const auto nesting = [](Connection &connection) {
    std::string elements = "<rss>";
    while (elements.size() < 60'000) {
      elements += "<item>";
    }
    connection.beginChunked();
    // Until the client has had enough.
    for (int count = 0; count < 50'000'000 / 60'000; ++count) {
      if (!connection.chunk(elements)) {
        return;
      }
    }
    ADD_FAILURE() << "all of it was read";
  };
  answer("/feed.xml", nesting);
  EXPECT_EQ(failure(), "failed: The list of new versions cannot be read: it is too long.");
}

TEST_F(StandardUpdaterTest, AFeedMayBeElsewhereButOnlyOverHTTPS) {
  HTTPTestServer plain([](Connection &connection) { connection.respond(200, "<rss/>"); });
  answer("/feed.xml", redirectTo(plain.url("/feed.xml")));
  EXPECT_EQ(failure(), "failed: The server redirects to an address that is not https.");
  EXPECT_TRUE(plain.requests().empty());

  HTTPTestServer elsewhere([feed = feedOf({})](Connection &connection) { connection.respond(200, feed); },
                           certificate.serverContext());
  answer("/feed.xml", redirectTo("/other.xml"));
  answer("/other.xml", redirectTo(elsewhere.url("/feed.xml")));
  start().checkForUpdates();
  EXPECT_TRUE(comesTo("found 2.0"));
  EXPECT_EQ(elsewhere.requests().size(), 1U);

  answer("/feed.xml", redirectTo("/feed.xml"));
  EXPECT_FALSE(failure().empty());
}

TEST_F(StandardUpdaterTest, AnUpdateThatCouldNotBeUsedIsNotOffered) {
  serve({.signature = ""});
  EXPECT_EQ(failure(), "failed: The update is not signed, so it is not used.");
  serve({.url = "http://localhost/package.deb"});
  EXPECT_EQ(failure(), "failed: The update is not offered over an encrypted connection, so it is not used.");
  serve({.url = "file:///etc/passwd"});
  EXPECT_EQ(failure(), "failed: The update is not offered over an encrypted connection, so it is not used.");
  serve({.length = "200000001"});
  EXPECT_EQ(failure(), "failed: The update is too large, so it is not used.");
}

TEST_F(StandardUpdaterTest, CancellingACheckOfASilentServerEndsItAtOnce) {
  answer("/feed.xml", [](Connection &connection) { EXPECT_TRUE(connection.waitForClose()); });
  auto &updater = start();
  updater.checkForUpdates();
  server.waitForRequests(1);
  const auto began = std::chrono::steady_clock::now();
  driver.cancel();
  EXPECT_TRUE(updater.canCheckForUpdates());
  EXPECT_TRUE(Task::endAll(seconds(30)));
  EXPECT_LT(std::chrono::steady_clock::now() - began, seconds(10));
  mainQueue.runPending();
  EXPECT_EQ(driver.stages, std::vector<std::string>{"checking"});
}

TEST_F(StandardUpdaterTest, AResultThatWasCancelledOnItsWayIsNotShown) {
  serve({});
  auto &updater = start();
  updater.checkForUpdates();
  server.waitForRequests(1);
  const auto cancelFirst = driver.cancel;
  cancelFirst();
  updater.checkForUpdates();
  EXPECT_TRUE(comesTo("found 2.0"));
  cancelFirst();
  EXPECT_EQ(driver.stages, (std::vector<std::string>{"checking", "checking", "found 2.0"}));
  EXPECT_TRUE(updater.canCheckForUpdates());
}

TEST_F(StandardUpdaterTest, AskedAgainWhileAnOfferWaitsItIsBroughtToTheFront) {
  serve({});
  auto &updater = start();
  updater.checkForUpdates();
  ASSERT_TRUE(comesTo("found 2.0"));
  updater.checkForUpdates();
  EXPECT_EQ(driver.broughtToFront, 1);
  EXPECT_EQ(driver.stages.size(), 2U);
  EXPECT_EQ(requestsOf("/feed.xml"), 1U);
}

TEST_F(StandardUpdaterTest, EndsDuringACheckWithoutASound) {
  answer("/feed.xml", [](Connection &connection) { connection.waitForClose(); });
  start().checkForUpdates();
  server.waitForRequests(1);
  drop();
  EXPECT_TRUE(Task::endAll(seconds(30)));
  mainQueue.runPending();
  driver.cancel();
  EXPECT_EQ(driver.stages, std::vector<std::string>{"checking"});
}

TEST(StandardUpdaterDefaults, TheKernelHasAVersion) {
  EXPECT_TRUE(isVersion(StandardUpdater::kernelVersion())) << StandardUpdater::kernelVersion();
}

}  // namespace
}  // namespace lumiwren::testing
