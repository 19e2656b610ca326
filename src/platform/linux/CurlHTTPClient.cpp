#include "platform/linux/CurlHTTPClient.h"

#include "platform/linux/CurlLibrary.h"
#include "platform/linux/CurlNetwork.h"
#include "platform/linux/CurlTransfer.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace lumiwren {

namespace {

class CurlHTTPResponse : public HTTPResponse {
public:
  CurlHTTPResponse(std::shared_ptr<CurlNetwork> network, std::shared_ptr<CurlTransfer> transfer,
                   const std::stop_token &token)
      : network_(std::move(network)),
        transfer_(std::move(transfer)),
        status_(transfer_->waitForStatus(token)) {}
  CurlHTTPResponse(const CurlHTTPResponse &) = delete;
  CurlHTTPResponse &operator=(const CurlHTTPResponse &) = delete;
  ~CurlHTTPResponse() override {
    transfer_->cancel();
    network_->settle();
  }

  int status() const override { return status_; }
  std::string_view read(const std::stop_token &token) override { return transfer_->read(token); }

private:
  const std::shared_ptr<CurlNetwork> network_;
  const std::shared_ptr<CurlTransfer> transfer_;
  const int status_;
};

/// A line break in a header would let its value write headers of its own.
void checkHeaders(const HTTPRequest &request) {
  for (const auto &[name, value] : request.headers) {
    const auto text = value.reveal();
    if (std::any_of(text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; })) {
      throw TransportError("The value of the \"" + name +
                           "\" header holds a line break, so it cannot be sent.");
    }
  }
}

}  // namespace

CurlHTTPClient::CurlHTTPClient(std::string certificateDirectory)
    : network_(std::make_shared<CurlNetwork>(std::move(certificateDirectory))) {}

CurlHTTPClient::~CurlHTTPClient() {
  network_->quit();
}

void CurlHTTPClient::prepare() {
  std::call_once(isPrepared_, [this] {
    preparation_ = std::jthread([] {
      try {
        CurlLibrary::shared();
      } catch (const TransportError &) {  // The request will say so.
      }
    });
  });
}

std::unique_ptr<HTTPResponse> CurlHTTPClient::send(const HTTPRequest &request, const std::stop_token &token) {
  throwIfStopped(token);
  checkHeaders(request);
  auto transfer = std::make_shared<CurlTransfer>(request, network_);
  network_->attendTo(transfer);
  return std::make_unique<CurlHTTPResponse>(network_, std::move(transfer), token);
}

std::string CurlHTTPClient::defaultCertificateDirectory() {
  const char *const directory = std::getenv("SSL_CERT_DIR");
  return directory != nullptr && *directory != '\0' ? directory : "/etc/ssl/certs";
}

}  // namespace lumiwren
