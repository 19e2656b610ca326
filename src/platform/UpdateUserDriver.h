#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace lumiwren {

/// A new version that is offered to the user. Both texts are plain; the notes may be empty.
struct UpdateOffer {
  std::string version;
  std::string notes;
};

/// Shows the user how looking for a new version goes, one stage at a time: each call takes the place of what
/// is shown. Main thread. A callback is called once at the most, and not after the next stage has come; when
/// the user is done with a stage, the driver takes away what it shows by itself.
class UpdateUserDriver {
public:
  enum class Choice { Install, RemindLater, Skip };
  enum class Occasion {
    Asked,      // The user has asked, and looks here.
    Scheduled,  // The user is at work somewhere else and must not be disturbed.
  };

  virtual ~UpdateUserDriver() = default;

  virtual void showChecking(std::function<void()> cancel) = 0;
  /// To close what is shown is to choose RemindLater.
  virtual void showFound(const UpdateOffer &offer, Occasion occasion, std::function<void(Choice)> reply) = 0;
  /// Brings what is shown to the user who has asked again.
  virtual void bringToFront() = 0;
  virtual void showDownloading(const std::string &version, std::function<void()> cancel) = 0;
  /// Of the stage before: bytes; `total` is 0 where it is unknown.
  virtual void showProgress(std::uint64_t received, std::uint64_t total) = 0;
  /// The desktop's package installer has been given the new version, and has the word now.
  virtual void showHandedOver(const std::string &version) = 0;
  virtual void showUpToDate(const std::string &version) = 0;
  /// `reason` is a sentence.
  virtual void showFailure(const std::string &reason) = 0;
};

}  // namespace lumiwren
