#pragma once

#include "base/Task.h"
#include "platform/HTTPClient.h"
#include "platform/linux/CurlLibrary.h"

#include <array>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace lumiwren {

class CurlNetwork;

/// One request and its response. Whoever drives the network fills it, one reader empties it; in between is a
/// bounded buffer, and a transfer whose reader is slow is paused.
class CurlTransfer : public std::enable_shared_from_this<CurlTransfer> {
public:
  using TimePoint = std::chrono::steady_clock::time_point;
  enum class Outcome { Running, Complete, Failed, Cancelled };
  struct Setup {
    const CurlLibrary &curl;
    CURLSH *share;
    const std::string &certificateDirectory;
    const std::string &noProxy;
  };

  CurlTransfer(HTTPRequest request, std::shared_ptr<CurlNetwork> network);
  CurlTransfer(const CurlTransfer &) = delete;
  CurlTransfer &operator=(const CurlTransfer &) = delete;
  ~CurlTransfer() = default;

  // The reader's side. Both waits throw as HTTPResponse::read() does.
  int waitForStatus(const std::stop_token &token);
  std::string_view read(const std::stop_token &token);
  /// Any thread; never waits for the network.
  void cancel() noexcept;

  // The driver's side (see CurlNetwork).
  bool isCancelRequested() const;
  bool hasStarted() const { return curl_ != nullptr; }
  void start(CURLM *multi, const Setup &setup);
  /// The reader has made room. Does nothing when the transfer has ended meanwhile.
  void resume();
  /// libcurl has finished with the transfer.
  void complete(CURLcode result);
  void end(Outcome outcome, std::string failure = {});
  /// Takes the transfer off `multi`, which closes its connection if the response is not complete.
  void release(CURLM *multi);
  /// When the peer will have been silent for too long; TimePoint::max() while it is us who do not read.
  TimePoint silenceDeadline() const;
  CURL *easy() const { return easy_; }

private:
  static std::size_t onHeader(char *bytes, std::size_t, std::size_t size, void *self);
  static std::size_t onBody(char *bytes, std::size_t, std::size_t size, void *self);
  static std::size_t onUpload(char *buffer, std::size_t, std::size_t size, void *self);
  static int onSeek(void *self, curl_off_t offset, int origin);

  template <typename Take>
  void wait(const std::stop_token &token, Take take);
  bool followsRedirects() const { return request_.redirects == Redirects::HTTPSOnly; }
  std::string describe(CURLcode result) const;

  const HTTPRequest request_;
  const std::shared_ptr<CurlNetwork> network_;

  mutable std::mutex mutex_;
  std::optional<int> status_;
  std::string incoming_;
  bool isPaused_ = false;
  bool isCancelRequested_ = false;
  Outcome outcome_ = Outcome::Running;
  std::string failure_;

  std::string taken_;  // the reader's, until it reads again

  // The driver's.
  const CurlLibrary *curl_ = nullptr;  // there once the transfer has started
  CURL *easy_ = nullptr;               // there while libcurl works on the transfer
  curl_slist *headers_ = nullptr;
  std::array<char, CURL_ERROR_SIZE> errorText_{};
  std::size_t uploaded_ = 0;
  bool awaitsReader_ = false;
  bool namesLocation_ = false;  // the head that is being read
  TimePoint lastActivity_;
};

}  // namespace lumiwren
