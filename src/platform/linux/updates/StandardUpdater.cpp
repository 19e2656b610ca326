#include "platform/linux/updates/StandardUpdater.h"

#include "platform/linux/UserFolders.h"
#include "platform/linux/updates/UpdateDownload.h"
#include "platform/linux/updates/Version.h"

#include <sys/utsname.h>

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace lumiwren {
namespace {

using std::chrono::seconds;

constexpr std::string_view lastCheckKey = "SULastCheckTime";
constexpr std::string_view skippedVersionKey = "SUSkippedVersion";
constexpr seconds defaultInterval{86'400};
constexpr seconds shortestInterval{3'600};
// The main queue's clock stands still while the computer sleeps, so the time of day is looked at this often.
constexpr seconds longestSleep{3'600};

std::optional<std::int64_t> wholeNumber(const std::optional<std::string> &text) {
  std::int64_t number = 0;
  if (!text) {
    return std::nullopt;
  }
  const char *const end = text->data() + text->size();
  const auto [last, failure] = std::from_chars(text->data(), end, number);
  return failure == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

std::string runningVersion(const Bundle &bundle) {
  const auto version = bundle.stringForKey("CFBundleShortVersionString").value_or("");
  return isVersion(version) ? version : "";
}

std::string feedAddress(const Bundle &bundle) {
  const auto url = bundle.stringForKey("SUFeedURL").value_or("");
  return isHTTPSAddress(url) ? url : "";
}

/// Without a feed nothing is verified, and the library for it need not be set up.
std::optional<EdPublicKey> publicKey(const Bundle &bundle, const std::string &feedURL) {
  return feedURL.empty() ? std::nullopt
                         : EdPublicKey::fromBase64(bundle.stringForKey("SUPublicEDKey").value_or(""));
}

seconds checkInterval(const Bundle &bundle) {
  constexpr std::int64_t longestInterval = 10LL * 365 * 86'400;
  const auto stated = wholeNumber(bundle.stringForKey("SUScheduledCheckInterval"));
  return stated ? seconds(std::clamp<std::int64_t>(*stated, shortestInterval.count(), longestInterval))
                : defaultInterval;
}

/// RFC 8089; the path is absolute.
std::string fileURL(const std::filesystem::path &path) {
  constexpr std::string_view unreserved =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string url = "file://";
  for (const char byte : path.string()) {
    if (unreserved.find(byte) != std::string_view::npos) {
      url += byte;
    } else {
      const auto value = static_cast<unsigned char>(byte);
      url.append({'%', digits[value >> 4], digits[value & 0xfU]});
    }
  }
  return url;
}

}  // namespace

StandardUpdater::StandardUpdater(const Services &services, UpdateUserDriver &driver, Options options)
    : services_(services),
      driver_(driver),
      options_(std::move(options)),
      folder_(options_.folder),
      version_(runningVersion(services.bundle)),
      feedURL_(feedAddress(services.bundle)),
      key_(publicKey(services.bundle, feedURL_)),
      interval_(checkInterval(services.bundle)) {
  if (isConfigured()) {
    folder_.clear();
    sleepFor(untilDue());
  }
}

bool StandardUpdater::canCheckForUpdates() {
  return isConfigured() && (stage_ == Stage::Idle || stage_ == Stage::Offering);
}

void StandardUpdater::checkForUpdates() {
  if (!isConfigured()) {
    return;
  }
  if (stage_ == Stage::Idle) {
    check(Occasion::Asked);
  } else if (stage_ == Stage::Checking && occasion_ == Occasion::Scheduled) {
    showChecking();
  } else {
    driver_.bringToFront();
  }
}

std::filesystem::path StandardUpdater::defaultFolder() {
  return cacheFolder() / "lumiwren" / "updates";
}

std::string StandardUpdater::kernelVersion() {
  utsname system{};
  ::uname(&system);
  const std::string_view release = system.release;
  return std::string(release.substr(0, release.find_first_not_of("0123456789.")));
}

seconds StandardUpdater::untilDue() const {
  const seconds now = std::chrono::duration_cast<seconds>(options_.now().time_since_epoch());
  const auto last = wholeNumber(services_.userDefaults.dataForKey(lastCheckKey));
  // A time in the future was written while the clock was wrong.
  const bool isKnown = last && *last >= 0 && *last <= now.count();
  return isKnown ? std::max(seconds(*last) + interval_ - now, seconds(0)) : seconds(0);
}

void StandardUpdater::sleepFor(seconds duration) {
  services_.mainQueue.postAfter(std::min(duration, longestSleep), [weak = anchor_.weak()] {
    if (auto *const self = weak.get()) {
      self->wake();
    }
  });
}

void StandardUpdater::wake() {
  const auto left = untilDue();
  if (left == seconds(0) && stage_ == Stage::Idle) {
    check(Occasion::Scheduled);
  }
  // A check that fails, for want of a network perhaps, is made again before long.
  sleepFor(left == seconds(0) ? longestSleep : left);
}

void StandardUpdater::check(Occasion occasion) {
  enter(Stage::Checking);
  occasion_ = occasion;
  if (occasion == Occasion::Asked) {
    showChecking();
  }
  auto then = inThisStage<const Checked &>([this](const Checked &result) { checked(result); });
  task_ = Task::start([&http = services_.httpClient, &mainQueue = services_.mainQueue, url = feedURL_,
                       version = version_, system = options_.systemVersion,
                       then = std::move(then)](const std::stop_token &token) {
    Checked result;
    try {
      const auto items = loadAppcast(http, url, token);
      result.hasFeed = true;
      result.update = newestUpdate(items, version, system);
      if (result.update) {
        requireUsable(*result.update);
      }
    } catch (const UpdateError &error) {
      result.failure = error.what();
    }
    mainQueue.post([then, result = std::move(result)] { then(result); });
  });
}

void StandardUpdater::showChecking() {
  occasion_ = Occasion::Asked;
  driver_.showChecking(inThisStage<>([this] { enter(Stage::Idle); }));
}

void StandardUpdater::checked(const Checked &result) {
  enter(Stage::Idle);
  if (result.hasFeed) {
    const auto now = std::chrono::duration_cast<seconds>(options_.now().time_since_epoch());
    services_.userDefaults.setData(lastCheckKey, std::to_string(now.count()));
  }
  const bool isAsked = occasion_ == Occasion::Asked;
  if (!result.failure.empty()) {
    if (isAsked) {
      driver_.showFailure(result.failure);
    }
  } else if (!result.update) {
    if (isAsked) {
      driver_.showUpToDate(version_);
    }
  } else if (isAsked || services_.userDefaults.dataForKey(skippedVersionKey) != result.update->version) {
    offer(*result.update);
  }
}

void StandardUpdater::offer(const AppcastItem &item) {
  using Choice = UpdateUserDriver::Choice;
  enter(Stage::Offering);
  driver_.showFound({.version = item.version, .notes = item.notes}, occasion_,
                    inThisStage<Choice>([this, item](Choice choice) { answered(item, choice); }));
}

void StandardUpdater::answered(const AppcastItem &item, UpdateUserDriver::Choice choice) {
  enter(Stage::Idle);
  if (choice == UpdateUserDriver::Choice::Install) {
    download(item);
  } else if (choice == UpdateUserDriver::Choice::Skip) {
    services_.userDefaults.setData(skippedVersionKey, item.version);
  }
}

void StandardUpdater::download(const AppcastItem &item) {
  enter(Stage::Downloading);
  driver_.showDownloading(item.version, inThisStage<>([this] { enter(Stage::Idle); }));
  auto progress = inThisStage<std::uint64_t>(
      [this, total = item.length](std::uint64_t received) { driver_.showProgress(received, total); });
  auto then = inThisStage<const Downloaded &>(
      [this, version = item.version](const Downloaded &result) { downloaded(version, result); });
  task_ = Task::start([&http = services_.httpClient, &mainQueue = services_.mainQueue, item, key = *key_,
                       folder = folder_, progress = std::move(progress),
                       then = std::move(then)](const std::stop_token &token) {
    Downloaded result;
    try {
      // Nobody may be there any more to take it: then the file ends with the last who has it.
      result.file = downloadPackage(
          http, item, key, folder,
          [&](std::uint64_t received) { mainQueue.post([progress, received] { progress(received); }); },
          token);
    } catch (const UpdateError &error) {
      result.failure = error.what();
    }
    mainQueue.post([then, result = std::move(result)] { then(result); });
  });
}

void StandardUpdater::downloaded(const std::string &version, const Downloaded &result) {
  enter(Stage::Idle);
  if (!result.file) {
    driver_.showFailure(result.failure);
    return;
  }
  // Kept also where nothing opens it: it is what the user has asked for, and it is genuine.
  result.file->keep();
  const auto &path = result.file->path();
  if (services_.workspace.openURL(fileURL(path))) {
    driver_.showHandedOver(version);
  } else {
    driver_.showFailure("There is no program here that installs packages. The update was saved as " +
                        path.string() + ".");
  }
}

void StandardUpdater::enter(Stage stage) {
  stage_ = stage;
  ++stageNumber_;
  task_.cancel();
}

template <typename... Args>
std::function<void(Args...)> StandardUpdater::inThisStage(
    std::type_identity_t<std::function<void(Args...)>> then) {
  return [weak = anchor_.weak(), number = stageNumber_, then = std::move(then)](Args... args) {
    auto *const self = weak.get();
    if (self != nullptr && self->stageNumber_ == number) {
      then(args...);
    }
  };
}

}  // namespace lumiwren
