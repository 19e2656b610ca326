#include "base/Task.h"
#include "platform/http/HTTPClientTesting.h"
#include "platform/linux/CurlHTTPClient.h"
#include "platform/testing/FakeHTTPClient.h"
#include "support/HTTPTestServer.h"

#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <memory>

namespace lumiwren::testing {
namespace {

/// What the fake promises to the tests that use it, the real client does.
class RealClient {
public:
  HTTPClient &client() { return client_; }
  std::string url() const { return server_.url(); }
  void begin(const std::string &piece) { first_.set_value(piece); }
  void end() { ended_.set_value(false); }
  void fail() { ended_.set_value(true); }
  void waitUntilClosed() { closed_.wait(); }

private:
  std::promise<std::string> first_;
  std::promise<bool> ended_;
  std::latch closed_{1};
  HTTPTestServer server_{[this](HTTPTestServer::Connection &connection) {
    const auto piece = first_.get_future().get();
    connection.beginChunked(207);
    connection.chunk(piece);
    if (piece == "stall") {
      connection.waitForClose();
      closed_.count_down();
    } else if (ended_.get_future().get()) {
      connection.reset();
    } else {
      connection.endChunked();
    }
  }};
  CurlHTTPClient client_;
};

class FakeClient {
public:
  HTTPClient &client() { return client_; }
  std::string url() const { return "http://fake.test/"; }
  void begin(const std::string &piece) { exchange_->respond(207).push(piece); }
  void end() { exchange_->end(); }
  void fail() { exchange_->fail("broken off"); }
  void waitUntilClosed() { exchange_->waitUntilClosed(); }

private:
  FakeHTTPClient client_;
  std::shared_ptr<FakeHTTPClient::Exchange> exchange_ = client_.expect();
};

template <typename Peer>
class HTTPClientContract : public ::testing::Test {
protected:
  Peer peer_;
};
using Peers = ::testing::Types<RealClient, FakeClient>;
TYPED_TEST_SUITE(HTTPClientContract, Peers);

TYPED_TEST(HTTPClientContract, ABodyIsReadToItsEnd) {
  this->peer_.begin("piece");
  const auto response = this->peer_.client().send(post(this->peer_.url()), {});
  EXPECT_EQ(response->status(), 207);
  EXPECT_EQ(response->read({}), "piece");
  this->peer_.end();
  EXPECT_EQ(response->read({}), "");
  EXPECT_EQ(response->read({}), "");
}

TYPED_TEST(HTTPClientContract, AFailureComesAfterWhatHadArrived) {
  this->peer_.begin("piece");
  const auto response = this->peer_.client().send(post(this->peer_.url()), {});
  EXPECT_EQ(response->read({}), "piece");
  this->peer_.fail();
  EXPECT_THROW(response->read({}), TransportError);
  EXPECT_THROW(response->read({}), TransportError);
}

TYPED_TEST(HTTPClientContract, StoppingEndsAWaitingRead) {
  this->peer_.begin("stall");
  std::stop_source stop;
  const auto response = this->peer_.client().send(post(this->peer_.url()), stop.get_token());
  EXPECT_EQ(response->read(stop.get_token()), "stall");
  auto waiting = std::async(std::launch::async, [&] { response->read(stop.get_token()); });

  stop.request_stop();

  EXPECT_THROW(waiting.get(), CancellationError);
  this->peer_.waitUntilClosed();
}

TYPED_TEST(HTTPClientContract, StoppingEndsARequestWithoutAnAnswer) {
  std::stop_source stop;
  auto waiting = std::async(std::launch::async,
                            [&] { this->peer_.client().send(post(this->peer_.url()), stop.get_token()); });

  stop.request_stop();

  EXPECT_THROW(waiting.get(), CancellationError);
  this->peer_.begin("piece");
  this->peer_.end();
}

TYPED_TEST(HTTPClientContract, DroppingTheResponseClosesIt) {
  this->peer_.begin("stall");
  this->peer_.client().send(post(this->peer_.url()), {}).reset();
  this->peer_.waitUntilClosed();
}

}  // namespace
}  // namespace lumiwren::testing
