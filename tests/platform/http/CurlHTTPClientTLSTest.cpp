#include "platform/http/HTTPClientTesting.h"
#include "platform/linux/CurlHTTPClient.h"
#include "support/HTTPTestServer.h"
#include "support/TestCertificate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <vector>

namespace lumiwren::testing {
namespace {

using Connection = HTTPTestServer::Connection;

TEST(CurlHTTPClientTLS, ATrustedServerIsAsked) {
  const TestCertificate certificate;
  HTTPTestServer server([](Connection &connection) { connection.respond(200, "secret"); },
                        certificate.serverContext());
  CurlHTTPClient client(certificate.authorityDirectory());

  EXPECT_EQ(readAll(*client.send(post(server.url()), {})), "secret");
  EXPECT_EQ(server.requests().at(0).header("Authorization"), "Bearer sk-test");
}

TEST(CurlHTTPClientTLS, AServerOfAnUnknownAuthorityGetsNothing) {
  const TestCertificate certificate;
  HTTPTestServer server([](Connection &connection) { connection.respond(200, "secret"); },
                        certificate.serverContext());
  CurlHTTPClient client;

  const auto error = transportError([&] { client.send(post(server.url()), {}); });

  EXPECT_TRUE(error.starts_with("The server's certificate is not trusted: ")) << error;
  EXPECT_TRUE(server.requests().empty());
}

TEST(CurlHTTPClientTLS, ACertificateForAnotherNameIsNotAccepted) {
  const TestCertificate certificate;
  HTTPTestServer server([](Connection &connection) { connection.respond(200, "secret"); },
                        certificate.serverContext());
  CurlHTTPClient client(certificate.authorityDirectory());

  const auto error = transportError(
      [&] { client.send(post("https://127.0.0.2:" + std::to_string(server.port()) + "/"), {}); });

  EXPECT_TRUE(error.starts_with("Failed to connect") || error.starts_with("The server's certificate"))
      << error;
  EXPECT_TRUE(server.requests().empty());
}

TEST(CurlHTTPClientTLS, TheEnvironmentNamesTheTrustedCertificates) {
  const TestCertificate certificate;
  EXPECT_EQ(CurlHTTPClient::defaultCertificateDirectory(), "/etc/ssl/certs");
  setenv("SSL_CERT_DIR", certificate.authorityDirectory().c_str(), 1);
  EXPECT_EQ(CurlHTTPClient::defaultCertificateDirectory(), certificate.authorityDirectory());
  unsetenv("SSL_CERT_DIR");
}

TEST(CurlHTTPClientTLS, ANewConnectionTakesUpTheSessionOfTheLast) {
  const TestCertificate certificate;
  std::mutex mutex;
  std::vector<bool> resumed;
  HTTPTestServer server(
      [&](Connection &connection) {
        const std::lock_guard lock(mutex);
        resumed.push_back(connection.isResumed());
        connection.respond(200, "ok", "Connection: close\r\n");
        connection.close();
      },
      certificate.serverContext());
  CurlHTTPClient client(certificate.authorityDirectory());

  for (int count = 0; count < 3; ++count) {
    EXPECT_EQ(readAll(*client.send(post(server.url()), {})), "ok");
  }

  EXPECT_EQ(resumed, (std::vector<bool>{false, true, true}));
}

TEST(CurlHTTPClientTLS, AnEncryptedStreamArrivesWhole) {
  const TestCertificate certificate;
  HTTPTestServer server(
      [](Connection &connection) {
        connection.beginChunked();
        for (int count = 0; count < 1000; ++count) {
          connection.chunk(std::to_string(count) + ";");
        }
        connection.endChunked();
      },
      certificate.serverContext());
  CurlHTTPClient client(certificate.authorityDirectory());
  std::string expected;
  for (int count = 0; count < 1000; ++count) {
    expected += std::to_string(count) + ";";
  }

  EXPECT_EQ(readAll(*client.send(post(server.url()), {})), expected);
}

TEST(CurlHTTPClientTLS, AStreamCutOffWithoutAFarewellIsLost) {
  const TestCertificate certificate;
  HTTPTestServer server(
      [](Connection &connection) {
        connection.beginChunked();
        connection.chunk("truncated");
        connection.close();  // The server shuts the socket down under TLS.
      },
      certificate.serverContext());
  CurlHTTPClient client(certificate.authorityDirectory());

  const auto error = transportError([&] { readAll(*client.send(post(server.url()), {})); });

  EXPECT_TRUE(error.starts_with("The connection to the server was lost: ")) << error;
}

TEST(CurlHTTPClientTLS, FollowsRedirectsOverHTTPSOnlyForWhoWantsThat) {
  const TestCertificate certificate;
  HTTPTestServer plain([](Connection &connection) { connection.respond(200, "plain"); });
  HTTPTestServer server(
      [&](Connection &connection) {
        const auto &target = connection.request().target;
        if (target == "/there") {
          connection.respond(200, "there");
        } else if (target == "/unnamed") {
          connection.respond(302, "nowhere");
        } else {
          connection.respond(
              301, "moved", target == "/away" ? "location: /there\r\n" : "Location: " + plain.url() + "\r\n");
        }
      },
      certificate.serverContext());
  CurlHTTPClient client(certificate.authorityDirectory());
  const auto get = [&](const std::string &url, Redirects redirects) {
    HTTPRequest request;
    request.method = "GET";
    request.url = url;
    request.redirects = redirects;
    const auto response = client.send(request, {});
    return std::to_string(response->status()) + " " + readAll(*response);
  };

  EXPECT_EQ(get(server.url("/away"), Redirects::NotFollowed), "301 moved");
  EXPECT_EQ(get(server.url("/away"), Redirects::HTTPSOnly), "200 there");
  EXPECT_EQ(get(server.url("/unnamed"), Redirects::HTTPSOnly), "302 nowhere");
  EXPECT_EQ(transportError([&] { get(server.url("/plain"), Redirects::HTTPSOnly); }),
            "The server redirects to an address that is not https.");
  EXPECT_NE(transportError([&] { get(plain.url(), Redirects::HTTPSOnly); }), "");
  EXPECT_TRUE(plain.requests().empty());
}

}  // namespace
}  // namespace lumiwren::testing
