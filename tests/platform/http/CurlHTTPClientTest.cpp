#include "platform/linux/CurlHTTPClient.h"

#include "platform/http/HTTPClientTesting.h"
#include "support/HTTPTestServer.h"

#include <gtest/gtest.h>

#include <netinet/in.h>
#include <sys/socket.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <latch>
#include <thread>
#include <vector>

namespace lumiwren::testing {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Connection = HTTPTestServer::Connection;

/// Sets a variable for as long as it lives.
class EnvironmentVariable {
public:
  EnvironmentVariable(const char *name, const std::string &value) : name_(name) {
    setenv(name, value.c_str(), 1);
  }
  EnvironmentVariable(const EnvironmentVariable &) = delete;
  EnvironmentVariable &operator=(const EnvironmentVariable &) = delete;
  ~EnvironmentVariable() { unsetenv(name_); }

private:
  const char *const name_;
};

TEST(CurlHTTPClient, SendsMethodHeadersAndBodyAsTheyAre) {
  HTTPTestServer server([](Connection &connection) { connection.respond(200, "ok"); });
  CurlHTTPClient client;
  const auto body = "{\"a\":\"\0\xC3\xA9\"}"s;

  const auto response = client.send(post(server.url("/v1/x?y=1"), body), {});

  EXPECT_EQ(response->status(), 200);
  EXPECT_EQ(readAll(*response), "ok");
  const auto request = server.requests().at(0);
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.target, "/v1/x?y=1");
  EXPECT_EQ(request.header("Authorization"), "Bearer sk-test");
  EXPECT_EQ(request.header("Content-Type"), "application/json");
  EXPECT_EQ(request.body, body);
}

TEST(CurlHTTPClient, AsksForNoEncodingWhichWouldDelayChunks) {
  HTTPTestServer server([](Connection &connection) { connection.respond(200, ""); });
  CurlHTTPClient client;

  client.send(post(server.url()), {});

  EXPECT_EQ(server.requests().at(0).header("Accept-Encoding"), std::nullopt);
}

TEST(CurlHTTPClient, SendsALargeBodyWithoutWaitingForConsent) {
  HTTPTestServer server([](Connection &connection) { connection.respond(200, ""); });
  CurlHTTPClient client;
  const std::string body(5'000'000, 'x');

  const auto response = client.send(post(server.url(), body), {});

  EXPECT_EQ(response->status(), 200);
  EXPECT_EQ(server.requests().at(0).header("Expect"), std::nullopt);
  EXPECT_EQ(server.requests().at(0).body.size(), body.size());
}

TEST(CurlHTTPClient, TheStatusReachesTheCallerBeforeTheBody) {
  std::latch headRead(1);
  HTTPTestServer server([&](Connection &connection) {
    connection.beginChunked(429);
    headRead.wait();
    connection.chunk("body");
    connection.endChunked();
  });
  CurlHTTPClient client;

  const auto response = client.send(post(server.url()), {});

  EXPECT_EQ(response->status(), 429);
  headRead.count_down();
  EXPECT_EQ(readAll(*response), "body");
}

TEST(CurlHTTPClient, InterimAnswersAreNotTheAnswer) {
  HTTPTestServer server([](Connection &connection) {
    connection.write("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: </x>\r\n\r\n");
    connection.respond(201, "made");
  });
  CurlHTTPClient client;

  const auto response = client.send(post(server.url()), {});

  EXPECT_EQ(response->status(), 201);
  EXPECT_EQ(readAll(*response), "made");
}

TEST(CurlHTTPClient, AnAnswerOneByteAtATimeArrivesWhole) {
  const std::string text =
      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nd\xC3\xA9\r\n\r\n0\r\n\r\n";
  HTTPTestServer server([&](Connection &connection) {
    for (const char byte : text) {
      connection.write({&byte, 1});
    }
  });
  CurlHTTPClient client;

  const auto response = client.send(post(server.url()), {});

  EXPECT_EQ(response->status(), 200);
  EXPECT_EQ(readAll(*response), "d\xC3\xA9\r\n");
}

TEST(CurlHTTPClient, EachChunkCanBeReadBeforeTheNextIsSent) {
  std::atomic<int> read = 0;
  HTTPTestServer server([&](Connection &connection) {
    connection.beginChunked();
    for (int count = 0; count < 20; ++count) {
      connection.chunk(std::to_string(count) + ";");
      read.wait(count);
    }
    connection.endChunked();
  });
  CurlHTTPClient client;

  const auto response = client.send(post(server.url()), {});
  for (int count = 0; count < 20; ++count) {
    EXPECT_EQ(response->read({}), std::to_string(count) + ";");
    read = count + 1;
    read.notify_one();
  }
  EXPECT_EQ(response->read({}), "");
  EXPECT_EQ(response->read({}), "");
}

TEST(CurlHTTPClient, ABodyWithoutLengthEndsWithTheConnection) {
  HTTPTestServer server([](Connection &connection) {
    connection.write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nto the end");
    connection.close();
  });
  CurlHTTPClient client;

  EXPECT_EQ(readAll(*client.send(post(server.url()), {})), "to the end");
}

TEST(CurlHTTPClient, TrailersAreNoSecondAnswer) {
  HTTPTestServer server([](Connection &connection) {
    connection.write(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nok\r\n0\r\nStatus: 500\r\n\r\n");
  });
  CurlHTTPClient client;

  const auto response = client.send(post(server.url()), {});

  EXPECT_EQ(readAll(*response), "ok");
  EXPECT_EQ(response->status(), 200);
}

TEST(CurlHTTPClient, AThousandRequestsUseOneConnection) {
  HTTPTestServer server([](Connection &connection) { connection.respond(200, "ok"); });
  CurlHTTPClient client;

  for (int count = 0; count < 1000; ++count) {
    ASSERT_EQ(readAll(*client.send(post(server.url()), {})), "ok");
  }

  EXPECT_EQ(server.requests().size(), 1000U);
  EXPECT_EQ(server.connectionCount(), 1U);
}

TEST(CurlHTTPClient, AKeptConnectionThatTheServerHasClosedIsReplaced) {
  HTTPTestServer server([](Connection &connection) {
    connection.respond(200, "ok");
    connection.close();  // Without having announced it.
  });
  CurlHTTPClient client;

  for (int count = 0; count < 5; ++count) {
    EXPECT_EQ(readAll(*client.send(post(server.url(), "body"), {})), "ok");
  }

  for (const auto &request : server.requests()) {
    EXPECT_EQ(request.body, "body");
  }
}

TEST(CurlHTTPClient, ManyStreamsAtOnceKeepApart) {
  constexpr int streams = 32;
  std::latch allThere(streams);
  HTTPTestServer server([&](Connection &connection) {
    connection.beginChunked();
    allThere.arrive_and_wait();
    for (int count = 0; count < 200; ++count) {
      connection.chunk(connection.request().body);
    }
    connection.endChunked();
  });
  CurlHTTPClient client;
  std::vector<std::future<std::string>> answers;
  for (int stream = 0; stream < streams; ++stream) {
    answers.push_back(std::async(std::launch::async, [&, stream] {
      return readAll(*client.send(post(server.url(), "<" + std::to_string(stream) + ">"), {}));
    }));
  }

  for (int stream = 0; stream < streams; ++stream) {
    std::string expected;
    for (int count = 0; count < 200; ++count) {
      expected += "<" + std::to_string(stream) + ">";
    }
    EXPECT_EQ(answers[static_cast<std::size_t>(stream)].get(), expected);
  }
}

TEST(CurlHTTPClient, AReaderThatStopsReadingHoldsTheServerBack) {
  constexpr std::size_t all = 64'000'000;
  const std::string piece(100'000, 'x');
  std::atomic<std::size_t> sent = 0;
  HTTPTestServer server([&](Connection &connection) {
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(all) + "\r\n\r\n");
    while (sent < all && connection.write(piece)) {
      sent += piece.size();
    }
  });
  HTTPTestServer silent([](Connection &connection) { connection.waitForClose(); });
  CurlHTTPClient client;
  // Who waits here takes in what arrives for others, too.
  Reader driver(client, post(silent.url()));
  silent.waitForRequests(1);
  auto request = post(server.url());
  request.timeoutInterval = 300ms;

  const auto response = client.send(request, {});
  // The server stands still for three times the silence limit, which does not count while it is us who do not
  // read.
  std::size_t before = 0;
  do {
    before = sent;
    std::this_thread::sleep_for(1s);
  } while (sent != before);
  EXPECT_LT(sent, all);

  EXPECT_EQ(readAll(*response).size(), all);
}

TEST(CurlHTTPClient, ARedirectIsAnAnswerAndNotFollowed) {
  HTTPTestServer elsewhere([](Connection &connection) { connection.respond(200, "stolen"); });
  HTTPTestServer server(
      [&](Connection &connection) { connection.respond(307, "", "Location: " + elsewhere.url() + "\r\n"); });
  CurlHTTPClient client;

  const auto response = client.send(post(server.url()), {});

  EXPECT_EQ(response->status(), 307);
  EXPECT_EQ(readAll(*response), "");
  EXPECT_TRUE(elsewhere.requests().empty());
}

TEST(CurlHTTPClient, AsksTheProxyOfTheEnvironment) {
  HTTPTestServer proxy([](Connection &connection) { connection.respond(200, "from the proxy"); });
  const EnvironmentVariable variable("http_proxy", proxy.url(""));
  CurlHTTPClient client;

  EXPECT_EQ(readAll(*client.send(post("http://service.test/v1"), {})), "from the proxy");
  EXPECT_EQ(proxy.requests().at(0).target, "http://service.test/v1");
}

TEST(CurlHTTPClient, AsksTheProxyForATunnelToAnEncryptedService) {
  HTTPTestServer proxy([](Connection &connection) { connection.respond(403, "no"); });
  const EnvironmentVariable variable("https_proxy", proxy.url(""));
  CurlHTTPClient client;

  const auto error = transportError([&] { client.send(post("https://service.test/v1"), {}); });

  EXPECT_NE(error.find("403"), std::string::npos) << error;
  EXPECT_EQ(proxy.requests().at(0).method, "CONNECT");
  EXPECT_EQ(proxy.requests().at(0).target, "service.test:443");
  EXPECT_EQ(proxy.requests().at(0).header("Authorization"), std::nullopt);
}

TEST(CurlHTTPClient, HostsThatTheEnvironmentExceptsAreAskedDirectly) {
  HTTPTestServer proxy([](Connection &connection) { connection.respond(200, "from the proxy"); });
  const EnvironmentVariable variable("http_proxy", proxy.url(""));
  const EnvironmentVariable exceptions("no_proxy", "service.invalid");
  CurlHTTPClient client;

  const auto error = transportError([&] { client.send(post("http://service.invalid/"), {}); });

  EXPECT_NE(error.find("service.invalid"), std::string::npos) << error;
  EXPECT_TRUE(proxy.requests().empty());
}

TEST(CurlHTTPClient, NoProxySeesWhatIsForThisComputer) {
  HTTPTestServer proxy([](Connection &connection) { connection.respond(200, "from the proxy"); });
  HTTPTestServer server([](Connection &connection) { connection.respond(200, "direct"); });
  const EnvironmentVariable variable("http_proxy", proxy.url(""));
  const EnvironmentVariable exceptions("no_proxy", "example.com");
  CurlHTTPClient client;
  const auto port = std::to_string(server.port());

  EXPECT_EQ(readAll(*client.send(post(server.url()), {})), "direct");
  EXPECT_EQ(readAll(*client.send(post("http://localhost:" + port + "/"), {})), "direct");
  EXPECT_TRUE(transportError([&] { client.send(post("http://[::1]:1/"), {}); }).find("proxy") ==
              std::string::npos);
  EXPECT_TRUE(proxy.requests().empty());
}

TEST(CurlHTTPClient, AHeaderCannotSmuggleInAnother) {
  HTTPTestServer server([](Connection &connection) { connection.respond(200, ""); });
  CurlHTTPClient client;
  for (const auto *const value : {"Bearer sk-secret\r\nX: y", "Bearer sk-secret\n", "Bearer sk-secret\r"}) {
    auto request = post(server.url());
    request.headers[0].value = Secret::copyOf(value);

    const auto error = transportError([&] { client.send(request, {}); });

    EXPECT_NE(error.find("Authorization"), std::string::npos) << error;
    EXPECT_EQ(error.find("sk-secret"), std::string::npos) << error;
  }
  EXPECT_TRUE(server.requests().empty());
}

TEST(CurlHTTPClient, GetAsksWithoutABody) {
  HTTPTestServer server([](Connection &connection) { connection.respond(200, "feed"); });
  CurlHTTPClient client;
  HTTPRequest request;
  request.method = "GET";
  request.url = server.url("/feed");

  EXPECT_EQ(readAll(*client.send(request, {})), "feed");
  EXPECT_EQ(server.requests().at(0).method, "GET");
}

}  // namespace
}  // namespace lumiwren::testing
