#include "platform/http/HTTPClientTesting.h"
#include "platform/linux/CurlHTTPClient.h"
#include "support/HTTPTestServer.h"

#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <thread>

namespace lumiwren::testing {
namespace {

using namespace std::chrono_literals;
using Connection = HTTPTestServer::Connection;

/// A port at which connections are refused: bound, so that nobody else gets it, but not listening.
class RefusingPort {
public:
  RefusingPort() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(socket_, reinterpret_cast<sockaddr *>(&address), size);
    ::getsockname(socket_, reinterpret_cast<sockaddr *>(&address), &size);
    port_ = ntohs(address.sin_port);
  }
  RefusingPort(const RefusingPort &) = delete;
  RefusingPort &operator=(const RefusingPort &) = delete;
  ~RefusingPort() { ::close(socket_); }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }

private:
  const int socket_;
  int port_ = 0;
};

std::string failureOf(const HTTPTestServer::Handler &handler, const HTTPRequest &base = post("")) {
  HTTPTestServer server(handler);
  CurlHTTPClient client;
  auto request = base;
  request.url = server.url();
  return transportError([&] { readAll(*client.send(request, {})); });
}

HTTPRequest impatient() {
  auto request = post("");
  request.timeoutInterval = 300ms;
  return request;
}

TEST(CurlHTTPClientFailure, ARefusedConnectionSaysSo) {
  const RefusingPort port;
  CurlHTTPClient client;

  const auto error = transportError([&] { client.send(post(port.url()), {}); });

  EXPECT_NE(error.find("Failed to connect to 127.0.0.1"), std::string::npos) << error;
}

TEST(CurlHTTPClientFailure, AnUnknownHostSaysSo) {
  CurlHTTPClient client;

  const auto error = transportError([&] { client.send(post("http://no-such-host.invalid/"), {}); });

  EXPECT_EQ(error, "Could not resolve host: no-such-host.invalid");
}

TEST(CurlHTTPClientFailure, OtherSchemesAreNotLoaded) {
  CurlHTTPClient client;

  const auto error = transportError([&] { client.send(post("file:///etc/hostname"), {}); });

  EXPECT_NE(error.find("not supported"), std::string::npos) << error;
}

TEST(CurlHTTPClientFailure, AConnectionClosedWithoutAnAnswerIsLost) {
  const auto error = failureOf([](Connection &connection) { connection.close(); });

  EXPECT_EQ(error, "The connection to the server was lost: Empty reply from server");
}

TEST(CurlHTTPClientFailure, AResetBeforeTheHeadIsLost) {
  const auto error = failureOf([](Connection &connection) { connection.reset(); });

  EXPECT_TRUE(error.starts_with("The connection to the server was lost: ")) << error;
}

TEST(CurlHTTPClientFailure, AResetInTheBodyIsLostAfterWhatHadArrived) {
  std::atomic<bool> read = false;
  HTTPTestServer server([&](Connection &connection) {
    connection.beginChunked();
    connection.chunk("first");
    read.wait(false);
    connection.reset();
  });
  CurlHTTPClient client;

  const auto response = client.send(post(server.url()), {});
  EXPECT_EQ(response->read({}), "first");
  read = true;
  read.notify_one();
  const auto error = transportError([&] { response->read({}); });

  EXPECT_TRUE(error.starts_with("The connection to the server was lost: ")) << error;
  EXPECT_EQ(transportError([&] { response->read({}); }), error);
}

TEST(CurlHTTPClientFailure, ABodyShorterThanItsLengthIsLost) {
  const auto error = failureOf([](Connection &connection) {
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nshort");
    connection.close();
  });

  EXPECT_EQ(error, "The connection to the server was lost: transfer closed with 5 bytes remaining to read");
}

TEST(CurlHTTPClientFailure, AChunkedBodyThatIsCutOffIsLost) {
  for (const auto *const body : {"", "5\r\nab", "2\r\nab\r\n", "2\r\nab\r\n0\r\n"}) {
    const auto error = failureOf([&](Connection &connection) {
      connection.beginChunked();
      connection.write(body);
      connection.close();
    });

    EXPECT_TRUE(error.starts_with("The connection to the server was lost: ")) << body << ": " << error;
  }
}

TEST(CurlHTTPClientFailure, WhatIsNoHTTPHasNoStatus) {
  for (const auto *const answer : {"SSH-2.0-OpenSSH_9.2\r\n", "\r\n\r\n"}) {
    HTTPTestServer server([&](Connection &connection) {
      connection.write(answer);
      connection.close();
    });
    CurlHTTPClient client;

    const auto response = client.send(post(server.url()), {});

    EXPECT_EQ(response->status(), 0) << answer;
    EXPECT_EQ(readAll(*response), "");
  }
}

TEST(CurlHTTPClientFailure, SilenceBeforeTheHeadTimesOut) {
  EXPECT_EQ(failureOf([](Connection &connection) { connection.waitForClose(); }, impatient()),
            "The request timed out.");
}

TEST(CurlHTTPClientFailure, SilenceInTheBodyTimesOut) {
  const auto error = failureOf(
      [](Connection &connection) {
        connection.beginChunked();
        connection.chunk("first");
        connection.waitForClose();
      },
      impatient());

  EXPECT_EQ(error, "The request timed out.");
}

TEST(CurlHTTPClientFailure, AConnectionThatHasTimedOutIsNotUsedAgain) {
  std::atomic<int> count = 0;
  HTTPTestServer server([&](Connection &connection) {
    if (++count == 2) {
      connection.waitForClose();
    } else {
      connection.respond(200, "ok");
    }
  });
  CurlHTTPClient client;
  auto request = post(server.url());
  request.timeoutInterval = 300ms;

  EXPECT_EQ(readAll(*client.send(request, {})), "ok");
  EXPECT_EQ(transportError([&] { client.send(request, {}); }), "The request timed out.");
  EXPECT_EQ(readAll(*client.send(request, {})), "ok");
  EXPECT_EQ(server.connectionCount(), 2U);
}

TEST(CurlHTTPClientFailure, EveryRequestHasItsOwnLimit) {
  HTTPTestServer server([](Connection &connection) { connection.waitForClose(); });
  CurlHTTPClient client;
  Reader patient(client, post(server.url()));
  server.waitForRequests(1);
  auto request = post(server.url());
  request.timeoutInterval = 300ms;

  EXPECT_EQ(transportError([&] { client.send(request, {}); }), "The request timed out.");
  patient.cancel();
  EXPECT_EQ(patient.end(), End::Cancelled);
}

TEST(CurlHTTPClientFailure, AnAnswerThatOnlyDripsIsNotSilent) {
  HTTPTestServer server([](Connection &connection) {
    connection.beginChunked();
    // Together four times as long as the limit.
    for (int count = 0; count < 40 && !connection.waitForClose(100ms); ++count) {
      connection.chunk("x");
    }
    connection.endChunked();
  });
  CurlHTTPClient client;
  auto request = post(server.url());
  request.timeoutInterval = 1s;

  EXPECT_EQ(readAll(*client.send(request, {})), std::string(40, 'x'));
}

TEST(CurlHTTPClientFailure, AHeadThatOnlyDripsIsNotSilent) {
  HTTPTestServer server([](Connection &connection) {
    connection.write("HTTP/1.1 200 OK\r\n");
    for (int count = 0; count < 20 && !connection.waitForClose(100ms); ++count) {
      connection.write("X-Drip: " + std::to_string(count) + "\r\n");
    }
    connection.write("Content-Length: 2\r\n\r\nok");
  });
  CurlHTTPClient client;
  auto request = post(server.url());
  request.timeoutInterval = 1s;

  EXPECT_EQ(readAll(*client.send(request, {})), "ok");
}

}  // namespace
}  // namespace lumiwren::testing
