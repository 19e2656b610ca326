#pragma once

#include <curl/curl.h>

#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace lumiwren {

class CurlTransfer;

/// The thread that carries all transfers. It waits in one place, for sockets, the nearest silence limit, or a
/// transfer that wants its attention. Any thread, unless stated.
class CurlNetworkThread {
public:
  explicit CurlNetworkThread(std::string certificateDirectory);
  CurlNetworkThread(const CurlNetworkThread &) = delete;
  CurlNetworkThread &operator=(const CurlNetworkThread &) = delete;
  ~CurlNetworkThread() = default;

  /// Has a transfer started, resumed or cancelled, whichever it wants. Never waits. After quit() the transfer
  /// is cancelled.
  void attendTo(std::shared_ptr<CurlTransfer> transfer);
  /// Cancels every transfer and waits for the thread, which does not block. Once.
  void quit();

private:
  void run();
  bool attend();
  void reap();
  int expire();
  void remove(const std::shared_ptr<CurlTransfer> &transfer);

  const std::string certificateDirectory_;
  const std::string noProxy_;

  std::mutex mutex_;
  std::vector<std::shared_ptr<CurlTransfer>> wanting_;
  CURLM *multi_ = nullptr;  // there exactly while the thread takes care of transfers
  bool quitting_ = false;
  std::thread thread_;

  // Network thread only.
  CURLSH *share_ = nullptr;  // TLS sessions, which outlive the connections they were made on
  std::vector<std::shared_ptr<CurlTransfer>> transfers_;
};

}  // namespace lumiwren
