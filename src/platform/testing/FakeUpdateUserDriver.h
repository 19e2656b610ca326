#pragma once

#include "platform/UpdateUserDriver.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// Writes down what the user would see; the test is the user.
class FakeUpdateUserDriver : public UpdateUserDriver {
public:
  void showChecking(std::function<void()> cancelCallback) override {
    stages.emplace_back("checking");
    cancel = std::move(cancelCallback);
  }
  void showFound(const UpdateOffer &newOffer, Occasion newOccasion,
                 std::function<void(Choice)> replyCallback) override {
    stages.push_back("found " + newOffer.version);
    offer = newOffer;
    occasion = newOccasion;
    reply = std::move(replyCallback);
  }
  void bringToFront() override { ++broughtToFront; }
  void showDownloading(const std::string &version, std::function<void()> cancelCallback) override {
    stages.push_back("downloading " + version);
    cancel = std::move(cancelCallback);
  }
  void showProgress(std::uint64_t received, std::uint64_t total) override {
    progress.emplace_back(received, total);
  }
  void showHandedOver(const std::string &version) override { stages.push_back("handed over " + version); }
  void showUpToDate(const std::string &version) override { stages.push_back("up to date " + version); }
  void showFailure(const std::string &reason) override { stages.push_back("failed: " + reason); }

  /// Whether the stage that is shown is described so, from its beginning.
  bool shows(std::string_view description) const {
    return !stages.empty() && stages.back().starts_with(description);
  }

  std::vector<std::string> stages;
  UpdateOffer offer;
  Occasion occasion = Occasion::Asked;
  std::function<void()> cancel;
  std::function<void(Choice)> reply;
  int broughtToFront = 0;
  std::vector<std::pair<std::uint64_t, std::uint64_t>> progress;
};

}  // namespace lumiwren::testing
