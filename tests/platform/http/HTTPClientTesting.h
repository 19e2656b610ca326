#pragma once

#include "base/Task.h"
#include "platform/HTTPClient.h"

#include <chrono>
#include <future>
#include <stop_token>
#include <string>
#include <utility>

namespace lumiwren::testing {

inline HTTPRequest post(const std::string &url, std::string body = "{}") {
  HTTPRequest request;
  request.method = "POST";
  request.url = url;
  request.headers.push_back({"Authorization", Secret::copyOf("Bearer sk-test")});
  request.headers.push_back({"Content-Type", Secret::copyOf("application/json")});
  request.body = std::move(body);
  return request;
}

inline std::string readAll(HTTPResponse &response, const std::stop_token &token = {}) {
  std::string body;
  for (auto bytes = response.read(token); !bytes.empty(); bytes = response.read(token)) {
    body += bytes;
  }
  return body;
}

/// The description of the TransportError that `action` ends with; empty when it does not.
template <typename Action>
std::string transportError(Action action) {
  try {
    action();
  } catch (const TransportError &error) {
    return error.what();
  }
  return {};
}

/// For asserting that something ends "at once" on a machine that is busy with other things: far below the
/// minute for which the network may be silent.
inline constexpr std::chrono::seconds atOnce{10};

enum class End { Whole, Cancelled, Failed };

/// One request, read to its end on a thread of its own. Cancelled when dropped.
class Reader {
public:
  Reader(HTTPClient &client, const HTTPRequest &request)
      : end_(std::async(std::launch::async, [token = stop_.get_token(), &client, request] {
          try {
            const auto response = client.send(request, token);
            readAll(*response, token);
            return End::Whole;
          } catch (const CancellationError &) {
            return End::Cancelled;
          } catch (const TransportError &) {
            return End::Failed;
          }
        })) {}
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;
  ~Reader() { cancel(); }

  void cancel() { stop_.request_stop(); }
  bool endsAtOnce() { return end_.wait_for(atOnce) == std::future_status::ready; }
  End end() { return end_.get(); }

private:
  std::stop_source stop_;
  std::future<End> end_;
};

}  // namespace lumiwren::testing
