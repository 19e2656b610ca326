// What opening a connection costs, against curl as Debian ships it, and how fast a cancelled one is closed.

#include "base/Task.h"
#include "net/Row.h"
#include "net/ServerProcess.h"
#include "platform/http/NameLookup.h"
#include "platform/linux/CurlHTTPClient.h"
#include "support/TestCertificate.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace lumiwren::bench {
namespace {

using Connection = testing::HTTPTestServer::Connection;
using Clock = std::chrono::steady_clock;

constexpr int laterConnections = 5;

/// Memory that the server's process and this one see.
struct Shared {
  std::atomic<int> stalling;
  std::atomic<Clock::rep> closedAt;
};

Shared &makeShared() {
  void *const memory =
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    throw std::bad_alloc();
  }
  return *new (memory) Shared{};
}

std::string outputOf(const std::string &command) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE *)> pipe(popen(command.c_str(), "r"), &pclose);
  std::string output;
  std::array<char, 256> buffer{};
  while (pipe && std::fgets(buffer.data(), buffer.size(), pipe.get()) != nullptr) {
    output += buffer.data();
  }
  return output;
}

double load(HTTPClient &client, const std::string &url) {
  return milliseconds([&] {
    HTTPRequest request;
    request.method = "GET";
    request.url = url;
    const auto response = client.send(request, {});
    while (!response->read({}).empty()) {
    }
  });
}

/// A fresh process: its first connection pays for everything that is loaded once.
int connect(const std::string &url, const std::string &directory) {
  CurlHTTPClient client(directory);
  for (int count = 0; count <= laterConnections; ++count) {
    std::printf("%f ", load(client, url));
  }
  return 0;
}

/// The system's certificates, and the test's own authority among them.
class SystemCertificates {
public:
  explicit SystemCertificates(const testing::TestCertificate &certificate)
      : directory_(certificate.authorityDirectory()), bundle_(directory_ / "bundle.crt") {
    const std::filesystem::path system = "/etc/ssl/certs";
    std::ofstream bundle(bundle_);
    for (const auto &own : std::filesystem::directory_iterator(directory_)) {
      if (own.path() != bundle_) {
        bundle << std::ifstream(own.path()).rdbuf();
      }
    }
    bundle << std::ifstream(system / "ca-certificates.crt").rdbuf();
    for (const auto &entry : std::filesystem::directory_iterator(system)) {
      std::filesystem::create_symlink(entry.path(), directory_ / entry.path().filename());
    }
  }

  const std::filesystem::path &directory() const { return directory_; }
  const std::filesystem::path &bundle() const { return bundle_; }

private:
  const std::filesystem::path directory_;
  const std::filesystem::path bundle_;
};

void newConnections(const std::string &program, const ServerProcess &server,
                    const testing::TestCertificate &certificate) {
  const SystemCertificates certificates(certificate);
  const auto url = server.url("/close");
  const auto ours = program + " --connect " + url + " " + certificates.directory().string();
  // Debian's curl reads the bundle for every new connection; starting the command is not counted.
  const auto theirs = "curl -s -o /dev/null -w '%{time_total}' --cacert " + certificates.bundle().string() +
                      " --capath " + certificates.directory().string() + " " + url;
  std::vector<double> first;
  std::vector<double> later;
  std::vector<double> reference;
  for (int round = 0; round < 21; ++round) {
    std::istringstream times(outputOf(ours));
    double time = 0;
    times >> time;
    first.push_back(time);
    while (times >> time) {
      later.push_back(time);
    }
    reference.push_back(std::stod(outputOf(theirs)) * 1000);
  }
  if (later.size() != 21 * laterConnections) {
    throw std::runtime_error("a connection failed");
  }
  Row{"tls-new", median(first), "ms", "curl with Debian's defaults", median(reference), 0.3, {}}.print();
  Row{"tls-new-later", median(later), "ms", "curl with Debian's defaults", median(reference), 0.1, {}}
      .print();
}

void cancelling(const ServerProcess &server, Shared &shared) {
  constexpr int rounds = 200;
  CurlHTTPClient client;
  std::vector<double> closing;
  std::vector<double> asking;
  for (int round = 0; round < rounds; ++round) {
    shared.stalling = 0;
    shared.closedAt = 0;
    std::stop_source stop;
    std::thread reader([&] {
      try {
        HTTPRequest request;
        request.method = "GET";
        request.url = server.url("/stall");
        const auto response = client.send(request, stop.get_token());
        for (;;) {
          if (response->read(stop.get_token()) == "stalling") {
            shared.stalling = 1;
          }
        }
      } catch (const CancellationError &) {
        return;
      }
    });
    while (shared.stalling == 0) {
      std::this_thread::yield();
    }
    // The reader has the last piece; a moment later it waits for more.
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    const auto start = Clock::now();
    asking.push_back(milliseconds([&] { stop.request_stop(); }));
    reader.join();
    while (shared.closedAt == 0) {
      std::this_thread::yield();
    }
    closing.push_back(
        std::chrono::duration<double, std::milli>(Clock::duration(shared.closedAt) - start.time_since_epoch())
            .count());
  }
  std::vector<double> ending;
  for (int round = 0; round < rounds; ++round) {
    testing::HangingLookup lookup;
    std::stop_source stop;
    Clock::time_point ended;
    std::thread reader([&] {
      try {
        HTTPRequest request;
        request.method = "GET";
        request.url = "http://hanging.test/";
        client.send(request, stop.get_token());
      } catch (const CancellationError &) {
        ended = Clock::now();
      }
    });
    lookup.waitUntilCalled();
    const auto start = Clock::now();
    asking.push_back(milliseconds([&] { stop.request_stop(); }));
    reader.join();
    ending.push_back(std::chrono::duration<double, std::milli>(ended - start).count());
  }
  Row{"cancel", median(closing), "ms", "absolute", 1, 5, quantile(closing, 0.99)}.print();
  Row{"cancel-lookup", median(ending), "ms", "absolute", 1, 5, quantile(ending, 0.99)}.print();
  Row{"cancel-main-thread", median(asking), "ms", "absolute", 1, 1, quantile(asking, 0.99)}.print();
}

}  // namespace
}  // namespace lumiwren::bench

int main(int argc, char **argv) {
  using namespace lumiwren;
  using namespace lumiwren::bench;
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() == 3 && arguments[0] == "--connect") {
    return connect(arguments[1], arguments[2]);
  }
  Shared &shared = makeShared();
  const testing::TestCertificate certificate;
  const ServerProcess secureServer(
      [](Connection &connection) {
        connection.respond(200, "ok", "Connection: close\r\n");
        connection.close();
      },
      certificate.serverContext());
  const ServerProcess server([&shared](Connection &connection) {
    connection.beginChunked();
    connection.chunk("stalling");
    connection.waitForClose();
    shared.closedAt = Clock::now().time_since_epoch().count();
  });
  return runGroups(
      arguments,
      {{{"tls-new", "tls-new-later"},
        [&] { newConnections(std::filesystem::read_symlink("/proc/self/exe"), secureServer, certificate); }},
       {{"cancel", "cancel-lookup", "cancel-main-thread"}, [&] { cancelling(server, shared); }}});
}
