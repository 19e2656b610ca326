#pragma once

#include "base/Secret.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace lumiwren {

/// A failure below HTTP: name look-up, connection, TLS, silence, a body that broke off. what() is what the
/// user is told.
class TransportError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

struct HTTPHeader {
  std::string name;
  Secret value;
};

/// What becomes of an answer that names another address.
enum class Redirects {
  NotFollowed,  // It is the answer: what the request carries is meant for nobody else.
  HTTPSOnly,    // Followed, ten times at the most. The whole way is https, else it is a TransportError.
};

struct HTTPRequest {
  std::string method;
  std::string url;
  std::vector<HTTPHeader> headers;
  std::string body;
  /// The longest silence, before the response or within it; not a limit for the whole.
  std::chrono::milliseconds timeoutInterval{60'000};
  Redirects redirects = Redirects::NotFollowed;
};

/// A response whose body is read as it arrives. Any one thread. Dropping it closes the transfer.
class HTTPResponse {
public:
  virtual ~HTTPResponse() = default;

  /// The status code, 0 when the peer did not speak HTTP.
  virtual int status() const = 0;
  /// Waits for bytes and returns all that have arrived, without copying; empty exactly at the end of the
  /// body. The bytes are valid until the next call. Throws TransportError, and CancellationError as soon as
  /// `token` is stopped.
  virtual std::string_view read(const std::stop_token &token) = 0;
};

/// Loads URLs; connections are kept and reused between requests. Any thread.
class HTTPClient {
public:
  virtual ~HTTPClient() = default;

  /// Begins, in the background, to load what the first request needs, because there will be one soon.
  virtual void prepare() = 0;
  /// Sends the request and waits for the response's head. Throws as HTTPResponse::read() does.
  virtual std::unique_ptr<HTTPResponse> send(const HTTPRequest &request, const std::stop_token &token) = 0;
};

}  // namespace lumiwren
