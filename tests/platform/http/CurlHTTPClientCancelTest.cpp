#include "base/Task.h"
#include "platform/http/HTTPClientTesting.h"
#include "platform/http/NameLookup.h"
#include "platform/linux/CurlHTTPClient.h"
#include "support/HTTPTestServer.h"

#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <latch>
#include <optional>
#include <thread>
#include <vector>

namespace lumiwren::testing {
namespace {

using namespace std::chrono_literals;
using Connection = HTTPTestServer::Connection;

/// Takes connections no further than the first packet: its queue is full.
class DeafPort {
public:
  DeafPort() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    ::bind(listener_, reinterpret_cast<sockaddr *>(&address_), size);
    ::listen(listener_, 0);
    ::getsockname(listener_, reinterpret_cast<sockaddr *>(&address_), &size);
    filler_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ::connect(filler_, reinterpret_cast<sockaddr *>(&address_), size);
  }
  DeafPort(const DeafPort &) = delete;
  DeafPort &operator=(const DeafPort &) = delete;
  ~DeafPort() {
    ::close(filler_);
    ::close(listener_);
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)) + "/"; }

private:
  const int listener_;
  int filler_ = -1;
  sockaddr_in address_{};
};

/// A server that begins its answer and then says nothing more, and sees when the client goes.
class StallingServer {
public:
  explicit StallingServer(const std::string &beginning)
      : server_([this, beginning](Connection &connection) {
          connection.write(beginning);
          stalling_.count_down();
          if (connection.waitForClose()) {
            closed_.count_down();
          }
        }) {}

  std::string url() const { return server_.url(); }
  void waitUntilStalling() { stalling_.wait(); }
  void waitUntilClosed() { closed_.wait(); }

private:
  std::latch stalling_{1};
  std::latch closed_{1};
  HTTPTestServer server_;
};

constexpr auto head = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

TEST(CurlHTTPClientCancel, WhileResolving) {
  HangingLookup lookup;
  CurlHTTPClient client;
  Reader reader(client, post("http://hanging.test/"));
  lookup.waitUntilCalled();

  reader.cancel();

  EXPECT_TRUE(reader.endsAtOnce());
  EXPECT_EQ(reader.end(), End::Cancelled);
}

TEST(CurlHTTPClientCancel, WhileConnecting) {
  const DeafPort port;
  CurlHTTPClient client;
  Reader reader(client, post(port.url()));

  reader.cancel();

  EXPECT_TRUE(reader.endsAtOnce());
  EXPECT_EQ(reader.end(), End::Cancelled);
}

TEST(CurlHTTPClientCancel, WhileWaitingForTheHeadClosesTheConnection) {
  StallingServer server("");
  CurlHTTPClient client;
  Reader reader(client, post(server.url()));
  server.waitUntilStalling();

  reader.cancel();

  EXPECT_TRUE(reader.endsAtOnce());
  EXPECT_EQ(reader.end(), End::Cancelled);
  server.waitUntilClosed();
}

TEST(CurlHTTPClientCancel, InTheBodyClosesTheConnection) {
  StallingServer server(std::string(head) + "5\r\nfirst\r\n");
  CurlHTTPClient client;
  Reader reader(client, post(server.url()));
  server.waitUntilStalling();

  reader.cancel();

  EXPECT_TRUE(reader.endsAtOnce());
  EXPECT_EQ(reader.end(), End::Cancelled);
  server.waitUntilClosed();
}

TEST(CurlHTTPClientCancel, ATokenStoppedBeforeSendsNothing) {
  HTTPTestServer server([](Connection &connection) { connection.respond(200, "ok"); });
  CurlHTTPClient client;
  std::stop_source stop;
  stop.request_stop();

  EXPECT_THROW(client.send(post(server.url()), stop.get_token()), CancellationError);
  EXPECT_EQ(readAll(*client.send(post(server.url()), {})), "ok");
  EXPECT_EQ(server.requests().size(), 1U);
}

TEST(CurlHTTPClientCancel, ATokenStoppedBetweenReadsKeepsBackWhatHasArrived) {
  StallingServer server(std::string(head) + "5\r\nfirst\r\n");
  CurlHTTPClient client;
  std::stop_source stop;
  const auto response = client.send(post(server.url()), stop.get_token());
  server.waitUntilStalling();

  stop.request_stop();

  EXPECT_THROW(response->read(stop.get_token()), CancellationError);
  server.waitUntilClosed();
}

TEST(CurlHTTPClientCancel, DroppingTheResponseClosesTheConnection) {
  StallingServer server(std::string(head) + "5\r\nfirst\r\n");
  CurlHTTPClient client;

  client.send(post(server.url()), {}).reset();

  server.waitUntilClosed();
}

TEST(CurlHTTPClientCancel, DroppingAResponseWhoseTransferIsPausedClosesTheConnection) {
  std::latch closed(1);
  HTTPTestServer server([&](Connection &connection) {
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100000000\r\n\r\n");
    while (connection.write(std::string(100'000, 'x'))) {
    }
    closed.count_down();
  });
  StallingServer other("");
  CurlHTTPClient client;
  // Who waits here fills the buffer of the response that nobody reads.
  Reader driver(client, post(other.url()));
  other.waitUntilStalling();

  auto response = client.send(post(server.url()), {});
  EXPECT_NE(response->read({}), "");
  response.reset();

  closed.wait();
}

TEST(CurlHTTPClientCancel, OneStreamLeavesTheOthersAlone) {
  std::latch cancelled(1);
  std::latch streaming(2);
  HTTPTestServer server([&](Connection &connection) {
    connection.beginChunked();
    connection.chunk("first");
    streaming.count_down();
    if (connection.request().body == "doomed") {
      connection.waitForClose();
      cancelled.count_down();
    } else {
      cancelled.wait();
      connection.chunk("last");
      connection.endChunked();
    }
  });
  CurlHTTPClient client;
  Reader doomed(client, post(server.url(), "doomed"));
  Reader other(client, post(server.url(), "other"));
  streaming.wait();

  doomed.cancel();

  EXPECT_EQ(doomed.end(), End::Cancelled);
  EXPECT_EQ(other.end(), End::Whole);
}

TEST(CurlHTTPClientCancel, AtAnyMomentEndsCleanly) {
  HTTPTestServer server([](Connection &connection) {
    connection.beginChunked();
    for (int count = 0; count < 50 && connection.chunk(std::string(20'000, 'x')); ++count) {
    }
    connection.endChunked();
  });
  CurlHTTPClient client;
  for (int round = 0; round < 200; ++round) {
    Reader reader(client, post(server.url()));
    // Not slept away: the moments are closer together than a sleep is exact.
    const auto moment = std::chrono::steady_clock::now() + round * 20us;
    while (std::chrono::steady_clock::now() < moment) {
    }
    reader.cancel();
    ASSERT_TRUE(reader.endsAtOnce());
    EXPECT_NE(reader.end(), End::Failed);
  }
}

TEST(CurlHTTPClientQuit, WithoutARequestEnds) {
  const CurlHTTPClient client;
}

TEST(CurlHTTPClientQuit, WhileResolvingEndsTheReader) {
  HangingLookup lookup;
  std::optional<CurlHTTPClient> client(std::in_place);
  Reader reader(*client, post("http://hanging.test/"));
  lookup.waitUntilCalled();

  auto quit = std::async(std::launch::async, [&] { client.reset(); });

  EXPECT_EQ(quit.wait_for(atOnce), std::future_status::ready);
  EXPECT_EQ(reader.end(), End::Cancelled);
}

TEST(CurlHTTPClientQuit, WhileWaitingForTheHeadEndsTheReader) {
  StallingServer server("");
  std::optional<CurlHTTPClient> client(std::in_place);
  Reader reader(*client, post(server.url()));
  server.waitUntilStalling();

  client.reset();

  EXPECT_TRUE(reader.endsAtOnce());
  EXPECT_EQ(reader.end(), End::Cancelled);
  server.waitUntilClosed();
}

TEST(CurlHTTPClientQuit, InTheBodyEndsTheReader) {
  StallingServer server(std::string(head) + "5\r\nfirst\r\n");
  std::optional<CurlHTTPClient> client(std::in_place);
  Reader reader(*client, post(server.url()));
  server.waitUntilStalling();

  client.reset();

  EXPECT_TRUE(reader.endsAtOnce());
  EXPECT_EQ(reader.end(), End::Cancelled);
  server.waitUntilClosed();
}

TEST(CurlHTTPClientQuit, AResponseMayOutliveTheClient) {
  StallingServer server(std::string(head) + "5\r\nfirst\r\n");
  std::optional<CurlHTTPClient> client(std::in_place);
  const auto response = client->send(post(server.url()), {});
  EXPECT_EQ(response->read({}), "first");

  client.reset();

  EXPECT_EQ(response->status(), 200);
  EXPECT_THROW(response->read({}), CancellationError);
}

TEST(CurlHTTPClientQuit, AResponseThatIsWholeCanStillBeRead) {
  HTTPTestServer server([](Connection &connection) { connection.respond(200, "whole"); });
  std::optional<CurlHTTPClient> client(std::in_place);
  const auto response = client->send(post(server.url()), {});
  // A second request is answered only after the first is done with.
  EXPECT_EQ(readAll(*client->send(post(server.url()), {})), "whole");

  client.reset();

  EXPECT_EQ(response->read({}), "whole");
}

}  // namespace
}  // namespace lumiwren::testing
