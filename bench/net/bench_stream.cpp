// What a streamed answer costs on its way from the socket to the main thread, against QNetworkAccessManager.

#include "ai/KeychainManager.h"
#include "ai/LineSplitter.h"
#include "ai/OpenAIAPIService.h"
#include "ai/OpenAIStreamResponse.h"
#include "base/Task.h"
#include "net/Chunks.h"
#include "net/Row.h"
#include "net/ServerProcess.h"
#include "platform/linux/CurlHTTPClient.h"
#include "platform/testing/FakeSecretStore.h"
#include "ui/MainQueueLoop.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <string>
#include <thread>
#include <vector>

namespace lumiwren::bench {
namespace {

using namespace std::chrono_literals;
using Connection = testing::HTTPTestServer::Connection;

constexpr int burstChunks = 50'000;
constexpr int pacedChunks = 300;

std::int64_t nanoseconds() {
  return std::chrono::steady_clock::now().time_since_epoch().count();
}

void serve(Connection &connection) {
  const auto &target = connection.request().target;
  connection.beginChunked();
  if (target == "/paced") {
    for (int count = 0; count < pacedChunks && !connection.waitForClose(2ms); ++count) {
      connection.chunk(chunkEvent(std::to_string(nanoseconds()) + " "));
    }
  } else {
    // Several to a packet, so that it is the clients that are slow, and not the server.
    constexpr int together = 10;
    std::string packet;
    for (int count = 0; count < together; ++count) {
      packet += Connection::chunkOf(chunkEvent("word"));
    }
    for (int count = 0; count < burstChunks && connection.write(packet); count += together) {
    }
  }
  connection.chunk("data: [DONE]\n\n");
  connection.endChunked();
}

/// Our own way: the client, the service and the main queue, hosted by Qt's loop.
class Ours {
public:
  /// Hands what has arrived to the main thread.
  template <typename OnBytes>
  void read(const std::string &url, OnBytes onBytes) {
    run([&](const std::stop_token &token) {
      const auto response = client_.send({.method = "POST", .url = url, .headers = {}, .body = "{}"}, token);
      for (auto bytes = response->read(token); !bytes.empty(); bytes = response->read(token)) {
        queue_.runAndWait(token, [&] { onBytes(bytes); });
      }
    });
  }
  /// Hands the whole answer so far to the main thread, once for each chunk.
  template <typename OnUpdate>
  void stream(const std::string &url, OnUpdate onUpdate) {
    OpenAIAPIService service(client_, keychain_, queue_, {url, "model"});
    run([&](const std::stop_token &token) {
      service.streamRequest({}, Secret::copyOf("key"), onUpdate, token);
    });
  }

private:
  template <typename Body>
  void run(Body body) {
    const auto task = Task::start([&](const std::stop_token &token) {
      body(token);
      queue_.post([] { QCoreApplication::exit(); });
    });
    QCoreApplication::exec();
  }

  MainQueue queue_;
  MainQueueLoop loop_{queue_};
  testing::FakeSecretStore store_;
  KeychainManager keychain_{store_};
  CurlHTTPClient client_;
};

/// Qt's own client, with the same lines and the same decoder on top.
class Reference {
public:
  template <typename OnBytes>
  void read(const std::string &url, OnBytes onBytes) {
    QNetworkRequest request(QUrl(QString::fromStdString(url)));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    auto *const reply = manager_.post(request, QByteArray("{}"));
    QObject::connect(reply, &QNetworkReply::readyRead, [&] {
      const auto bytes = reply->readAll();
      onBytes(std::string_view(bytes.data(), static_cast<std::size_t>(bytes.size())));
    });
    QObject::connect(reply, &QNetworkReply::finished, [] { QCoreApplication::exit(); });
    QCoreApplication::exec();
    delete reply;
  }
  template <typename OnUpdate>
  void stream(const std::string &url, OnUpdate onUpdate) {
    std::string answer;
    LineSplitter lines;
    read(url, [&](std::string_view bytes) {
      lines.feed(bytes, [&](std::string_view line) {
        if (!line.starts_with("data: ")) {
          return;
        }
        const auto chunk = OpenAIStreamResponse::decode(line.substr(6));
        if (chunk && chunk->choices->front().delta->content) {
          onUpdate(answer += *chunk->choices->front().delta->content);
        }
      });
    });
    onUpdate(answer);
  }

private:
  QNetworkAccessManager manager_;
};

void chunkDecode() {
  const auto json = chunkJSON("word");
  constexpr int repetitions = 20'000;
  std::vector<double> ours;
  std::vector<double> theirs;
  for (int round = 0; round < 15; ++round) {
    ours.push_back(milliseconds([&] {
      for (int count = 0; count < repetitions; ++count) {
        benchmark::DoNotOptimize(OpenAIStreamResponse::decode(json));
      }
    }));
    theirs.push_back(milliseconds([&] {
      for (int count = 0; count < repetitions; ++count) {
        benchmark::DoNotOptimize(nlohmann::json::parse(json));
      }
    }));
  }
  constexpr double toMicroseconds = 1000.0 / repetitions;
  Row{"chunk-decode",
      median(ours) * toMicroseconds,
      "us",
      "nlohmann json::parse",
      median(theirs) * toMicroseconds,
      1.0,
      {}}
      .print();
}

/// Adds the time since each stamp that `bytes` holds.
void takeLatencies(std::string_view bytes, std::vector<double> &latencies) {
  const auto now = nanoseconds();
  constexpr std::string_view mark = "\"content\":\"";
  for (auto at = bytes.find(mark); at != std::string_view::npos; at = bytes.find(mark, at + 1)) {
    const auto stamp = std::stoll(std::string(bytes.substr(at + mark.size(), 20)));
    latencies.push_back(static_cast<double>(now - stamp) / 1000.0);
  }
}

void chunkLatency(const ServerProcess &server) {
  Ours ours;
  Reference reference;
  std::vector<double> ourLatencies;
  std::vector<double> theirLatencies;
  for (int round = 0; round < 6; ++round) {
    ours.read(server.url("/paced"), [&](std::string_view bytes) { takeLatencies(bytes, ourLatencies); });
    reference.read(server.url("/paced"),
                   [&](std::string_view bytes) { takeLatencies(bytes, theirLatencies); });
  }
  Row{"chunk-latency",
      median(ourLatencies),
      "us",
      "QNetworkAccessManager",
      median(theirLatencies),
      0.8,
      quantile(ourLatencies, 0.99)}
      .print();
}

void streamBurst(const ServerProcess &server) {
  Ours ours;
  Reference reference;
  std::vector<double> ourTimes;
  std::vector<double> theirTimes;
  // What the popup shows: the whole answer, replaced by each update.
  std::string state;
  int updates = 0;
  const auto update = [&](const std::string &answer) {
    state = answer;
    ++updates;
  };
  for (int round = 0; round < 5; ++round) {
    for (const bool isOurs : {true, false}) {
      updates = 0;
      (isOurs ? ourTimes : theirTimes).push_back(milliseconds([&] {
        isOurs ? ours.stream(server.url("/burst"), update) : reference.stream(server.url("/burst"), update);
      }));
      if (updates != burstChunks + 1 || state.size() != 4 * static_cast<std::size_t>(burstChunks)) {
        throw std::runtime_error("a burst did not arrive whole");
      }
    }
  }
  Row{"stream-burst", median(ourTimes), "ms", "QNetworkAccessManager", median(theirTimes), 0.3, {}}.print();
}

}  // namespace
}  // namespace lumiwren::bench

int main(int argc, char **argv) {
  using namespace lumiwren::bench;
  const std::vector<std::string> wanted(argv + 1, argv + argc);
  const ServerProcess server(&serve);
  const QCoreApplication application(argc, argv);
  return runGroups(wanted, {{{"chunk-decode"}, &chunkDecode},
                            {{"chunk-latency"}, [&] { chunkLatency(server); }},
                            {{"stream-burst"}, [&] { streamBurst(server); }}});
}
