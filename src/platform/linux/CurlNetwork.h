#pragma once

#include "platform/linux/CurlLibrary.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace lumiwren {

class CurlTransfer;

/// What all transfers have in common. There is no thread behind it: whoever waits for its own transfer drives
/// them all meanwhile, one waiter at a time, and hands over when it has what it came for. So a chunk wakes
/// the very thread that wants it, and where nobody waits nothing runs. Any thread, unless stated.
class CurlNetwork {
public:
  explicit CurlNetwork(std::string certificateDirectory);
  CurlNetwork(const CurlNetwork &) = delete;
  CurlNetwork &operator=(const CurlNetwork &) = delete;
  ~CurlNetwork();

  /// Has a transfer started, resumed or cancelled, whichever it wants, by whoever drives. Never waits, but
  /// for libcurl to be loaded the first time; throws TransportError when it is not there. After quit() the
  /// transfer is cancelled.
  void attendTo(std::shared_ptr<CurlTransfer> transfer);
  /// Drives, or waits while another does, until `isReady` is true, or quit() is called. `isReady` must not
  /// wait, and is not asked again once it has been true.
  void driveUntil(const std::function<bool()> &isReady);
  /// Does what attendTo() has asked for, if nobody else is there to do it.
  void settle();
  /// Something has changed that another thread's `isReady` may look at.
  void notify();
  /// Cancels every transfer. Does not wait for the network.
  void quit();

private:
  void attend();
  void reap();
  int expire();
  /// The transfer may end with this.
  void remove(CurlTransfer &transfer);

  const std::string certificateDirectory_;
  const std::string noProxy_;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::shared_ptr<CurlTransfer>> wanting_;
  bool isDriven_ = false;
  bool isQuitting_ = false;

  // Whoever drives.
  const CurlLibrary *curl_ = nullptr;  // all made by the first transfer
  CURLM *multi_ = nullptr;
  CURLSH *share_ = nullptr;  // TLS sessions, which outlive the connections they were made on
  std::vector<std::shared_ptr<CurlTransfer>> transfers_;
};

}  // namespace lumiwren
