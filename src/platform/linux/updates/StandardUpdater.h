#pragma once

#include "base/MainQueue.h"
#include "base/Task.h"
#include "base/Weak.h"
#include "platform/Bundle.h"
#include "platform/HTTPClient.h"
#include "platform/UpdateUserDriver.h"
#include "platform/Updater.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "platform/linux/updates/Appcast.h"
#include "platform/linux/updates/EdSignature.h"
#include "platform/linux/updates/PrivateFolder.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

namespace lumiwren {

/// Looks for new versions in the feed that the bundle names: on its schedule, saying nothing unless there is
/// one, and on demand. A package is used only after its signature has been checked, and used means handed to
/// the desktop's package installer. Main thread; whatever waits runs on a task.
///
/// Entries of the bundle: "CFBundleShortVersionString", the running version; "SUFeedURL", an https address;
/// "SUPublicEDKey", the Ed25519 key in base64; "SUScheduledCheckInterval" in seconds, a day where it is
/// missing, an hour at the least. Without the first three, no check is ever made.
/// User defaults: "SULastCheckTime", seconds since 1970, and "SUSkippedVersion".
class StandardUpdater : public Updater {
public:
  using WallClock = std::chrono::system_clock;
  struct Options {
    /// For what is downloaded; emptied at construction where there is a feed.
    std::filesystem::path folder = defaultFolder();
    /// What a package's minimum system version is compared with.
    std::string systemVersion = kernelVersion();
    /// The schedule counts days, also those that a computer sleeps through.
    std::function<WallClock::time_point()> now = &WallClock::now;
  };
  struct Services {
    const Bundle &bundle;
    HTTPClient &httpClient;
    UserDefaults &userDefaults;
    Workspace &workspace;
    MainQueue &mainQueue;
  };

  /// Starts the schedule. The services and the driver outlive this object; the client also all tasks.
  StandardUpdater(const Services &services, UpdateUserDriver &driver, Options options);
  StandardUpdater(const Services &services, UpdateUserDriver &driver)
      : StandardUpdater(services, driver, Options()) {}

  /// False while a check or a download is under way.
  bool canCheckForUpdates() override;
  /// Always answered, also for a version that the user has skipped, and by a check on schedule that is under
  /// way. Anything later that is shown is brought to the front.
  void checkForUpdates() override;

  /// "lumiwren/updates" in the user's cache folder.
  static std::filesystem::path defaultFolder();
  /// The kernel's release as a version: "6.1.0" of "6.1.0-13-amd64".
  static std::string kernelVersion();

private:
  enum class Stage { Idle, Checking, Offering, Downloading };
  using Occasion = UpdateUserDriver::Occasion;
  struct Checked {
    bool hasFeed = false;
    std::optional<AppcastItem> update;
    std::string failure;  // empty when there is none
  };
  struct Downloaded {
    std::shared_ptr<PrivateFile> file;  // empty when there was a failure
    std::string failure;
  };

  bool isConfigured() const { return !feedURL_.empty() && key_ && !version_.empty(); }
  std::chrono::seconds untilDue() const;
  void sleepFor(std::chrono::seconds duration);
  void wake();
  void check(Occasion occasion);
  void showChecking();
  void checked(const Checked &result);
  void offer(const AppcastItem &item);
  void answered(const AppcastItem &item, UpdateUserDriver::Choice choice);
  void download(const AppcastItem &item);
  void downloaded(const std::string &version, const Downloaded &result);
  /// Leaves the stage before; what still comes of it is for nobody any more.
  void enter(Stage stage);
  /// `then` as a callback that does nothing once the present stage has been left, or this object has ended.
  template <typename... Args>
  std::function<void(Args...)> inThisStage(std::type_identity_t<std::function<void(Args...)>> then);

  const Services services_;
  UpdateUserDriver &driver_;
  const Options options_;
  const PrivateFolder folder_;
  const std::string version_;
  const std::string feedURL_;
  const std::optional<EdPublicKey> key_;
  const std::chrono::seconds interval_;
  Stage stage_ = Stage::Idle;
  Occasion occasion_ = Occasion::Asked;  // of the last check
  std::uint64_t stageNumber_ = 0;
  Task task_;
  WeakAnchor<StandardUpdater> anchor_{this};
};

}  // namespace lumiwren
