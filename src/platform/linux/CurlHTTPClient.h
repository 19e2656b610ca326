#pragma once

#include "platform/HTTPClient.h"

#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace lumiwren {

class CurlNetwork;

/// HTTPClient over libcurl, which is loaded when it is wanted, without a thread that stays (see CurlNetwork).
/// HTTP/2 where the server has it, the proxy variables of the environment (never for this computer's own
/// addresses).
class CurlHTTPClient : public HTTPClient {
public:
  /// Certificates are looked up one at a time in a directory with OpenSSL's hashed names: reading Debian's
  /// whole bundle would cost some 20 ms for each new connection.
  explicit CurlHTTPClient(std::string certificateDirectory = defaultCertificateDirectory());
  CurlHTTPClient(const CurlHTTPClient &) = delete;
  CurlHTTPClient &operator=(const CurlHTTPClient &) = delete;
  /// Ends every transfer; who still waits for one gets CancellationError. Responses may outlive the client.
  ~CurlHTTPClient() override;

  void prepare() override;
  std::unique_ptr<HTTPResponse> send(const HTTPRequest &request, const std::stop_token &token) override;

  /// SSL_CERT_DIR, as for all of OpenSSL's clients, or else where Debian keeps its certificates.
  static std::string defaultCertificateDirectory();

private:
  const std::shared_ptr<CurlNetwork> network_;
  std::once_flag isPrepared_;
  std::jthread preparation_;
};

}  // namespace lumiwren
