#include "platform/linux/WholeFile.h"
#include "platform/updates/UpdaterTesting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>

namespace lumiwren::testing {
namespace {

class StandardUpdaterDownloadTest : public UpdaterTest {
protected:
  /// Checks, and has the found version installed.
  StandardUpdater &install() {
    auto &updater = start();
    updater.checkForUpdates();
    EXPECT_TRUE(comesTo("found 2.0"));
    driver.reply(Choice::Install);
    EXPECT_TRUE(driver.shows("downloading 2.0"));
    return updater;
  }
  std::string failure() {
    auto &updater = install();
    EXPECT_TRUE(comesTo("failed: "));
    EXPECT_TRUE(nothingWasUsed());
    EXPECT_TRUE(updater.canCheckForUpdates());
    return driver.stages.back();
  }
  /// Something else in the package's place.
  void respondChanged(const std::string &bytes) {
    answer("/package.deb", [bytes](Connection &connection) { connection.respond(200, bytes); });
  }
};

TEST_F(StandardUpdaterDownloadTest, AGenuinePackageIsHandedToTheInstaller) {
  const Package package{.bytes = std::string(3'000'000, 'p')};
  serve(package);
  auto &updater = install();
  EXPECT_FALSE(updater.canCheckForUpdates());
  EXPECT_TRUE(comesTo("handed over 2.0"));
  ASSERT_EQ(files().size(), 1U);
  const auto file = files()[0];
  EXPECT_EQ(file.filename(), "lumiwren-2.0.deb");
  EXPECT_EQ(readWhole(file, std::nullopt).content, package.bytes);
  // The folder's name has a space.
  const auto path = folder.parent_path().string() + "/up%20dates/" + file.parent_path().filename().string();
  EXPECT_EQ(workspace.opened, std::vector<std::string>{"file://" + path + "/lumiwren-2.0.deb"});
  EXPECT_TRUE(updater.canCheckForUpdates());
  EXPECT_LE(driver.progress.size(), 200U);
  ASSERT_FALSE(driver.progress.empty());
  EXPECT_EQ(driver.progress.back(), (std::pair<std::uint64_t, std::uint64_t>{3'000'000, 3'000'000}));

  start();
  EXPECT_TRUE(files().empty()) << "the next start tidies up";
}

TEST_F(StandardUpdaterDownloadTest, TheLengthMayBeUnknown) {
  serve({.length = ""});
  install();
  EXPECT_TRUE(comesTo("handed over 2.0"));
}

TEST_F(StandardUpdaterDownloadTest, WithoutAnInstallerTheUserIsToldWhereThePackageIs) {
  serve({});
  workspace.canOpen = false;
  install();
  EXPECT_TRUE(comesTo("failed: There is no program here that installs packages. The update was saved as "));
  ASSERT_EQ(files().size(), 1U);
  EXPECT_TRUE(driver.stages.back().ends_with(files()[0].string() + "."));
}

TEST_F(StandardUpdaterDownloadTest, ABadSignatureIsRefused) {
  const std::string refused =
      "failed: The update is not signed by the makers of Lumiwren, so it was not used.";
  for (const auto &signature : {encodeBase64(std::string(64, 's')), std::string("bm9uZQ=="), std::string("?"),
                                sign("another file"), sign("")}) {
    serve({.signature = signature});
    EXPECT_EQ(failure(), refused) << signature;
  }
}

TEST_F(StandardUpdaterDownloadTest, AnotherFileThanTheSignedOneIsRefused) {
  const Package package;
  serve(package);
  auto changed = package.bytes;
  changed.back() = '?';
  respondChanged(changed);
  EXPECT_EQ(failure(), "failed: The update is not signed by the makers of Lumiwren, so it was not used.");
}

TEST_F(StandardUpdaterDownloadTest, AnotherKeyThanTheBundlesRefuses) {
  bundle.strings["SUPublicEDKey"] = encodeBase64(std::string(32, 'k'));
  serve({});
  EXPECT_EQ(failure(), "failed: The update is not signed by the makers of Lumiwren, so it was not used.");
}

TEST_F(StandardUpdaterDownloadTest, ATruncatedPackageIsRefused) {
  const Package package;
  serve(package);
  respondChanged(package.bytes.substr(1));
  EXPECT_EQ(failure(), "failed: The download is not complete.");
  answer("/package.deb", [](Connection &connection) {
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 23\r\n\r\n!<arch>");
    connection.close();
  });
  EXPECT_TRUE(failure().starts_with("failed: The connection to the server was lost: "));
}

TEST_F(StandardUpdaterDownloadTest, APackageLongerThanAnnouncedIsStopped) {
  serve({});
  answer("/package.deb", [](Connection &connection) {
    connection.beginChunked();
    const std::string piece(60'000, 'x');
    for (int count = 0; count < 1000; ++count) {
      if (!connection.chunk(piece)) {
        return;
      }
    }
    ADD_FAILURE() << "all of it was read";
  });
  EXPECT_EQ(failure(), "failed: The download is larger than announced, so it was stopped.");
}

TEST_F(StandardUpdaterDownloadTest, APackageThatIsNotThereIsAFailure) {
  serve({});
  answer("/package.deb", nullptr);
  EXPECT_EQ(failure(), "failed: The server answered with status 404.");
}

TEST_F(StandardUpdaterDownloadTest, APackageMayBeElsewhereButOnlyOverHTTPS) {
  const Package package;
  serve(package);
  HTTPTestServer plain([&](Connection &connection) { connection.respond(200, package.bytes); });
  answer("/package.deb", redirectTo(plain.url("/package.deb")));
  EXPECT_EQ(failure(), "failed: The server redirects to an address that is not https.");
  EXPECT_TRUE(plain.requests().empty());

  HTTPTestServer elsewhere([&](Connection &connection) { connection.respond(200, package.bytes); },
                           certificate.serverContext());
  answer("/package.deb", redirectTo(elsewhere.url("/package.deb")));
  install();
  EXPECT_TRUE(comesTo("handed over 2.0"));
  EXPECT_EQ(elsewhere.requests().size(), 1U);
}

TEST_F(StandardUpdaterDownloadTest, CancellingLeavesNothingAndEndsAtOnce) {
  serve({.length = "1000000"});
  answer("/package.deb", [](Connection &connection) {
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n" + std::string(500'000, 'x'));
    EXPECT_TRUE(connection.waitForClose());
  });
  auto &updater = install();
  ASSERT_TRUE(runUntil([&] { return !driver.progress.empty() && driver.progress.back().first == 500'000; }));
  EXPECT_EQ(files().size(), 1U);
  const auto began = std::chrono::steady_clock::now();
  driver.cancel();
  EXPECT_TRUE(updater.canCheckForUpdates());
  EXPECT_TRUE(Task::endAll(seconds(30)));
  EXPECT_LT(std::chrono::steady_clock::now() - began, seconds(10));
  EXPECT_TRUE(nothingWasUsed());
  mainQueue.runPending();
  EXPECT_TRUE(driver.shows("downloading"));
}

TEST_F(StandardUpdaterDownloadTest, AGenuinePackageThatComesTooLateIsRemoved) {
  serve({.length = ""});  // without which there is no progress to tell
  std::atomic<bool> isPosted = false;
  auto &updater = start();
  updater.checkForUpdates();
  ASSERT_TRUE(comesTo("found 2.0"));
  mainQueue.setWaker([&isPosted] {
    isPosted = true;
    isPosted.notify_all();
  });
  mainQueue.runPending();
  isPosted = false;
  driver.reply(Choice::Install);
  // The main thread is busy until the package is verified and on its way.
  isPosted.wait(false);
  EXPECT_EQ(files().size(), 1U);
  driver.cancel();
  mainQueue.runPending();
  EXPECT_TRUE(nothingWasUsed());
}

TEST_F(StandardUpdaterDownloadTest, AFolderThatCannotBeMadeIsAFailure) {
  serve({});
  std::ofstream(temporary.path() / "up dates") << "in the way";
  auto &updater = start();
  std::ofstream(temporary.path() / "up dates") << "in the way again";
  updater.checkForUpdates();
  ASSERT_TRUE(comesTo("found 2.0"));
  driver.reply(Choice::Install);
  EXPECT_TRUE(comesTo("failed: The update cannot be saved: Not a directory."));
  EXPECT_EQ(requestsOf("/package.deb"), 0U);
}

TEST_F(StandardUpdaterDownloadTest, WhatAKilledProgramLeftIsRemovedAtTheNextStart) {
  std::filesystem::create_directories(folder / "abcdef");
  std::ofstream(folder / "abcdef" / "lumiwren-1.5.deb") << "half";
  start();
  EXPECT_TRUE(files().empty());
}

}  // namespace
}  // namespace lumiwren::testing
