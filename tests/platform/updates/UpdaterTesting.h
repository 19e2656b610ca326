#pragma once

#include "base/Base64.h"
#include "base/MainQueue.h"
#include "base/Task.h"
#include "platform/linux/CurlHTTPClient.h"
#include "platform/linux/updates/StandardUpdater.h"
#include "platform/testing/FakeBundle.h"
#include "platform/testing/FakeUpdateUserDriver.h"
#include "platform/testing/FakeUserDefaults.h"
#include "platform/testing/FakeWorkspace.h"
#include "support/HTTPTestServer.h"
#include "support/TemporaryFolder.h"
#include "support/TestCertificate.h"

#include <gtest/gtest.h>

#include <sodium.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// The updater with a real server, a real client that trusts it, and a key to sign with.
class UpdaterTest : public ::testing::Test {
protected:
  using Connection = HTTPTestServer::Connection;
  using Choice = UpdateUserDriver::Choice;
  using Occasion = UpdateUserDriver::Occasion;
  using seconds = std::chrono::seconds;

  UpdaterTest() {
    EXPECT_GE(sodium_init(), 0);
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicKey{};
    crypto_sign_keypair(publicKey.data(), secretKey_.data());
    bundle.strings["CFBundleShortVersionString"] = "1.0";
    bundle.strings["SUFeedURL"] = server.url("/feed.xml");
    bundle.strings["SUPublicEDKey"] =
        encodeBase64({reinterpret_cast<const char *>(publicKey.data()), publicKey.size()});
    // Nothing is due, unless a test wants it.
    defaults.setData("SULastCheckTime", std::to_string(wallTime.count()));
  }
  ~UpdaterTest() override {
    EXPECT_TRUE(Task::endAll(seconds(30)));
    mainQueue.close();
  }

  std::string sign(std::string_view bytes) const {
    std::array<unsigned char, crypto_sign_BYTES> signature{};
    crypto_sign_detached(signature.data(), nullptr, reinterpret_cast<const unsigned char *>(bytes.data()),
                         bytes.size(), secretKey_.data());
    return encodeBase64({reinterpret_cast<const char *>(signature.data()), signature.size()});
  }

  struct Package {
    std::string version = "2.0";
    std::string bytes = "!<arch>\nthe new version";
    std::optional<std::string> url = std::nullopt;
    std::optional<std::string> signature = std::nullopt;
    std::optional<std::string> length = std::nullopt;
    std::string description = "<p>Better &amp; faster</p>";
  };
  std::string feedOf(const Package &package) const {
    return "<rss xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel><item>"
           "<sparkle:version>" +
           package.version + "</sparkle:version><description><![CDATA[" + package.description +
           "]]></description><enclosure url=\"" + package.url.value_or(server.url("/package.deb")) +
           "\" length=\"" + package.length.value_or(std::to_string(package.bytes.size())) +
           "\" sparkle:edSignature=\"" + package.signature.value_or(sign(package.bytes)) +
           "\"/></item></channel></rss>";
  }
  /// The server offers this package, and has it.
  void serve(const Package &package) {
    answer("/feed.xml", [feed = feedOf(package)](Connection &connection) { connection.respond(200, feed); });
    answer("/package.deb",
           [bytes = package.bytes](Connection &connection) { connection.respond(200, bytes); });
  }
  void answer(const std::string &path, HTTPTestServer::Handler handler) {
    const std::lock_guard lock(mutex_);
    handlers_[path] = std::move(handler);
  }
  static HTTPTestServer::Handler redirectTo(const std::string &url) {
    return [url](Connection &connection) {
      connection.respond(302, "<html>Found</html>", "Location: " + url + "\r\n");
    };
  }
  std::size_t requestsOf(std::string_view path) const {
    const auto requests = server.requests();
    return static_cast<std::size_t>(std::count_if(
        requests.begin(), requests.end(), [&](const auto &request) { return request.target == path; }));
  }

  StandardUpdater &start() {
    updater_ = std::make_unique<StandardUpdater>(
        StandardUpdater::Services{bundle, client, defaults, workspace, mainQueue}, driver,
        StandardUpdater::Options{.folder = folder, .systemVersion = "6.1", .now = [this] {
                                   return StandardUpdater::WallClock::time_point(wallTime);
                                 }});
    return *updater_;
  }
  void drop() { updater_.reset(); }
  /// Both clocks go on.
  void pass(seconds duration) {
    wallTime += duration;
    steadyTime += duration;
    mainQueue.runPending();
  }

  /// Runs the main queue until the condition holds; what it waits for happens on other threads.
  bool runUntil(const std::function<bool()> &condition) {
    const auto end = std::chrono::steady_clock::now() + seconds(60);
    mainQueue.runPending();
    while (!condition() && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      mainQueue.runPending();
    }
    return condition();
  }
  ::testing::AssertionResult comesTo(std::string_view stage) {
    if (runUntil([&] { return driver.shows(stage); })) {
      return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "shown is: " << (driver.stages.empty() ? "nothing" : driver.stages.back());
  }
  /// Waits for the end of a check that says nothing.
  bool endsInSilence() {
    return runUntil([this] { return updater_->canCheckForUpdates(); }) && driver.stages.empty();
  }
  /// What there is on disk but folders.
  std::vector<std::filesystem::path> files() const {
    std::vector<std::filesystem::path> found;
    if (std::filesystem::exists(folder)) {
      for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_directory()) {
          found.push_back(entry.path());
        }
      }
    }
    return found;
  }
  /// Nothing was handed to anyone, and nothing is left.
  bool nothingWasUsed() const { return workspace.opened.empty() && files().empty(); }

private:
  // Until the server has ended.
  std::mutex mutex_;
  std::map<std::string, HTTPTestServer::Handler> handlers_;

protected:
  const TestCertificate certificate;
  HTTPTestServer server{[this](Connection &connection) { handle(connection); }, certificate.serverContext()};
  CurlHTTPClient client{certificate.authorityDirectory()};
  FakeBundle bundle;
  FakeUserDefaults defaults;
  FakeWorkspace workspace;
  FakeUpdateUserDriver driver;
  const TemporaryFolder temporary;
  const std::filesystem::path folder = temporary.path() / "up dates";
  seconds wallTime{1'800'000'000};
  std::chrono::steady_clock::time_point steadyTime;
  MainQueue mainQueue{[this] { return steadyTime; }};

private:
  void handle(Connection &connection) {
    HTTPTestServer::Handler handler;
    {
      const std::lock_guard lock(mutex_);
      const auto found = handlers_.find(connection.request().target);
      if (found != handlers_.end()) {
        handler = found->second;
      }
    }
    if (handler) {
      handler(connection);
    } else {
      connection.respond(404, "not here");
    }
  }

  std::array<unsigned char, crypto_sign_SECRETKEYBYTES> secretKey_{};
  std::unique_ptr<StandardUpdater> updater_;
};

}  // namespace lumiwren::testing
