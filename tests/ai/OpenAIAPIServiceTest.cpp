#include "ai/OpenAIAPIService.h"

#include "ai/LumiwrenError.h"
#include "base/Task.h"
#include "platform/testing/FakeHTTPClient.h"
#include "platform/testing/FakeSecretStore.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace lumiwren {
namespace {

using nlohmann::json;
using testing::FakeHTTPClient;
using testing::FakeSecretStore;
using Updates = std::vector<std::string>;

std::string data(const std::string &content) {
  return "data: " + json{{"choices", {{{"index", 0}, {"delta", {{"content", content}}}}}}}.dump() + "\n";
}

class OpenAIAPIServiceTest : public ::testing::Test {
protected:
  OpenAIAPIServiceTest() {
    queue_.setWaker([this] {
      const std::lock_guard lock(mutex_);
      woken_ = true;
      changed_.notify_all();
    });
  }

  /// Runs `body` on another thread, and the main queue on this one, until `body` has ended.
  void runOffMain(const std::function<void()> &body) {
    ended_ = false;
    auto task = std::async(std::launch::async, [&] {
      struct EndNotice {
        OpenAIAPIServiceTest &test;
        ~EndNotice() {
          const std::lock_guard lock(test.mutex_);
          test.ended_ = true;
          test.changed_.notify_all();
        }
      } const notice{*this};
      body();
    });
    for (std::unique_lock lock(mutex_); !ended_;) {
      changed_.wait(lock, [this] { return woken_ || ended_; });
      woken_ = false;
      lock.unlock();
      queue_.runPending();
      lock.lock();
    }
    task.get();
  }

  void stream(const OpenAIRequest &request = {}, const std::stop_token &token = {}) {
    runOffMain([&] {
      service_.streamRequest(
          request, Secret::copyOf(" sk-key "),
          [this](const std::string &answer) {
            EXPECT_EQ(std::this_thread::get_id(), mainThread_);
            updates_.push_back(answer);
            if (onUpdate_) {
              onUpdate_();
            }
          },
          token);
    });
  }
  Updates updatesOf(const std::vector<std::string> &pieces) {
    updates_.clear();
    client_.expect(200, pieces);
    stream();
    return updates_;
  }

  const std::thread::id mainThread_ = std::this_thread::get_id();
  std::mutex mutex_;
  std::condition_variable changed_;
  bool woken_ = false;
  bool ended_ = false;
  MainQueue queue_;
  FakeHTTPClient client_;
  FakeSecretStore store_;
  KeychainManager keychain_{store_};
  OpenAIAPIService service_{client_, keychain_, queue_, OpenAIEndpoint{}};
  Updates updates_;
  std::function<void()> onUpdate_;
};

TEST_F(OpenAIAPIServiceTest, TheServiceIsTheFixedOne) {
  EXPECT_EQ(service_.baseURL(), "https://api.openai.com/v1/chat/completions");
  EXPECT_EQ(service_.model(), "gpt-4o-mini");
  EXPECT_EQ(OpenAIAPIService::maxTokens, 500);
}

TEST_F(OpenAIAPIServiceTest, TheRequestCarriesTheKeyAsStoredAndTheBodyAsGiven) {
  client_.expect(200);
  stream({.model = "m", .messages = {{"user", "Hi"}}, .maxTokens = 500, .stream = true});

  const auto request = client_.requests().at(0);
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.url, "https://api.openai.com/v1/chat/completions");
  EXPECT_EQ(request.timeoutInterval, std::chrono::seconds(60));
  ASSERT_EQ(request.headers.size(), 2U);
  EXPECT_EQ(request.headers[0].name, "Authorization");
  EXPECT_EQ(request.headers[0].value.reveal(), "Bearer  sk-key ");
  EXPECT_EQ(request.headers[1].name, "Content-Type");
  EXPECT_EQ(request.headers[1].value.reveal(), "application/json");
  const auto body = json::parse(request.body);
  EXPECT_EQ(body["max_tokens"], 500);
  EXPECT_EQ(body["stream"], true);
  EXPECT_EQ(body["messages"], json::parse(R"([{"role": "user", "content": "Hi"}])"));
}

TEST_F(OpenAIAPIServiceTest, FiveLinesYieldHelAndHelloAndAFinalHello) {
  EXPECT_EQ(updatesOf({data("Hel") + "\n" + data("lo") + "data: [DONE]\n"}),
            (Updates{"Hel", "Hello", "Hello"}));
}

TEST_F(OpenAIAPIServiceTest, ABodyWithoutContentYieldsOneEmptyUpdate) {
  EXPECT_EQ(updatesOf({}), Updates{""});
  EXPECT_EQ(updatesOf({": comment\n\nevent: x\ndata: [DONE]\n"}), Updates{""});
}

TEST_F(OpenAIAPIServiceTest, ARoleAloneIsNoUpdateButEmptyContentIsOne) {
  EXPECT_EQ(updatesOf({"data: {\"choices\":[{\"delta\":{\"role\":\"assistant\"}}]}\n"}), Updates{""});
  EXPECT_EQ(updatesOf({data("x"), data("")}), (Updates{"x", "x", "x"}));
}

TEST_F(OpenAIAPIServiceTest, ADataLineWithoutTheBlankIsSkipped) {
  auto line = data("no");
  line.erase(5, 1);
  EXPECT_EQ(updatesOf({line + data("yes")}), (Updates{"yes", "yes"}));
}

TEST_F(OpenAIAPIServiceTest, LinesThatAreNoDataAreSkipped) {
  EXPECT_EQ(updatesOf({"event: message\n: data\nDATA: {}\n" + (" " + data("no")) + "data\n" + data("yes")}),
            (Updates{"yes", "yes"}));
}

TEST_F(OpenAIAPIServiceTest, ADataLineThatIsNoJSONIsSkippedAndStreamingContinues) {
  EXPECT_EQ(updatesOf({data("a"), "data: {oops\n", "data: \n", "data: \xFF\n", "data: [DONE] \n",
                       "data:  [DONE]\n", data("b")}),
            (Updates{"a", "ab", "ab"}));
}

TEST_F(OpenAIAPIServiceTest, AChunkWithAWrongTypeIsSkippedAsAWhole) {
  EXPECT_EQ(updatesOf({"data: {\"created\":\"now\",\"choices\":[{\"delta\":{\"content\":\"no\"}}]}\n",
                       "data: {\"choices\":\"none\"}\n", data("yes")}),
            (Updates{"yes", "yes"}));
}

TEST_F(OpenAIAPIServiceTest, OnlyTheFirstChoiceCounts) {
  EXPECT_EQ(
      updatesOf(
          {"data: {\"choices\":[{\"delta\":{}},{\"delta\":{\"content\":\"no\"}}]}\n",
           "data: {\"choices\":[]}\n", "data: {}\n",
           "data: {\"choices\":[{\"delta\":{\"content\":\"yes\"}},{\"delta\":{\"content\":\"no\"}}]}\n"}),
      (Updates{"yes", "yes"}));
}

TEST_F(OpenAIAPIServiceTest, NeitherTheSentinelNorAFinishReasonEndsTheAnswer) {
  EXPECT_EQ(updatesOf({data("a"), "data: [DONE]\n\n",
                       "data: {\"choices\":[{\"delta\":{\"content\":\"b\"},\"finish_reason\":\"stop\"}]}\n",
                       data("c")}),
            (Updates{"a", "ab", "abc", "abc"}));
}

TEST_F(OpenAIAPIServiceTest, AServerThatStaysOpenAfterTheSentinelKeepsTheCallWaiting) {
  const auto exchange = client_.expect();
  exchange->respond(200).push(data("a") + "data: [DONE]\n\n");
  std::thread server([&] {
    exchange->waitUntilStarved();
    exchange->push(data("b")).end();
  });
  stream();
  server.join();
  EXPECT_EQ(updates_, (Updates{"a", "ab", "ab"}));
}

TEST_F(OpenAIAPIServiceTest, TheLastLineNeedsNoLineEnd) {
  auto line = data("end");
  line.pop_back();
  EXPECT_EQ(updatesOf({line}), (Updates{"end", "end"}));
}

TEST_F(OpenAIAPIServiceTest, AStreamSplitAfterEveryByteReadsTheSame) {
  const auto body =
      "data: {\"choices\":[{\"delta\":{\"content\":\"d\xC3\xA9j\xC3\xA0 \xF0\x9F\x90\xA6\"}}]}\r\n\r\n" +
      data("vu") + "\ndata: [DONE]\r\n";
  std::vector<std::string> bytes;
  for (const char byte : body) {
    bytes.emplace_back(1, byte);
  }
  const Updates expected{"d\xC3\xA9j\xC3\xA0 \xF0\x9F\x90\xA6", "d\xC3\xA9j\xC3\xA0 \xF0\x9F\x90\xA6vu",
                         "d\xC3\xA9j\xC3\xA0 \xF0\x9F\x90\xA6vu"};
  EXPECT_EQ(updatesOf({body}), expected);
  EXPECT_EQ(updatesOf(bytes), expected);
}

TEST_F(OpenAIAPIServiceTest, AHugeLineIsOneUpdate) {
  const std::string text(5'000'000, 'x');
  EXPECT_EQ(updatesOf({data(text)}), (Updates{text, text}));
}

TEST_F(OpenAIAPIServiceTest, ANulInTheContentIsPartOfTheAnswer) {
  const std::string text("a\0b", 3);
  EXPECT_EQ(updatesOf({data(text)}), (Updates{text, text}));
}

TEST_F(OpenAIAPIServiceTest, Status401ThrowsAPIErrorHTTP401) {
  client_.expect(401, {"{\"error\":\"the server's own text\"}"});
  try {
    stream();
    FAIL();
  } catch (const LumiwrenError &error) {
    EXPECT_EQ(error.kind(), LumiwrenError::Case::ApiError);
    EXPECT_EQ(error.errorDescription(), "API error: HTTP 401");
  }
  EXPECT_EQ(updates_, Updates{});
}

TEST_F(OpenAIAPIServiceTest, AnyStatusBut200IsAnErrorBeforeTheBodyIsRead) {
  for (const int status : {201, 204, 302, 307, 400, 403, 404, 429, 500, 503}) {
    const auto exchange = client_.expect();
    exchange->respond(status);  // The body would be waited for in vain.
    try {
      stream();
      FAIL() << status;
    } catch (const LumiwrenError &error) {
      EXPECT_EQ(error.errorDescription(), "API error: HTTP " + std::to_string(status));
    }
    EXPECT_TRUE(exchange->isClosed());
  }
  EXPECT_EQ(updates_, Updates{});
}

TEST_F(OpenAIAPIServiceTest, AnAnswerThatIsNoHTTPIsInvalid) {
  client_.expect(0);
  try {
    stream();
    FAIL();
  } catch (const LumiwrenError &error) {
    EXPECT_EQ(error.kind(), LumiwrenError::Case::InvalidResponse);
  }
}

TEST_F(OpenAIAPIServiceTest, ATransportFailureIsThrownUnchanged) {
  client_.expectFailure("Could not resolve host: api.openai.com");
  try {
    stream();
    FAIL();
  } catch (const TransportError &error) {
    EXPECT_STREQ(error.what(), "Could not resolve host: api.openai.com");
  }
}

TEST_F(OpenAIAPIServiceTest, AfterAFailureInTheBodyThereIsNoFinalUpdate) {
  client_.expect()
      ->respond(200)
      .push(data("a") + "data: {\"choices\":[{\"delta\":{\"content\":\"b\"}}]}")
      .fail("lost");
  EXPECT_THROW(stream(), TransportError);
  EXPECT_EQ(updates_, Updates{"a"});
}

TEST_F(OpenAIAPIServiceTest, CancellingEndsAStalledStreamWithoutAnUpdate) {
  const auto exchange = client_.expect();
  exchange->respond(200).push(data("a"));
  std::stop_source stop;
  std::thread user([&] {
    exchange->waitUntilStarved();
    stop.request_stop();
  });
  EXPECT_THROW(stream({}, stop.get_token()), CancellationError);
  user.join();
  EXPECT_EQ(updates_, Updates{"a"});
  EXPECT_TRUE(exchange->isClosed());
}

TEST_F(OpenAIAPIServiceTest, CancellingInAnUpdateMakesItTheLast) {
  std::stop_source stop;
  onUpdate_ = [&] { stop.request_stop(); };
  client_.expect(200, {data("a") + data("b") + data("c")});
  EXPECT_THROW(stream({}, stop.get_token()), CancellationError);
  EXPECT_EQ(updates_, Updates{"a"});
}

TEST_F(OpenAIAPIServiceTest, ReadingPausesWhileTheMainThreadIsBusyWithAnUpdate) {
  const auto exchange = client_.expect();
  exchange->respond(200).push(data("a")).push(data("b")).end();
  std::vector<std::size_t> unread;
  onUpdate_ = [&] { unread.push_back(exchange->unread()); };
  stream();
  EXPECT_EQ(updates_, (Updates{"a", "ab", "ab"}));
  EXPECT_EQ(unread, (std::vector<std::size_t>{1, 0, 0}));
}

TEST_F(OpenAIAPIServiceTest, CallsAtOnceKeepApart) {
  constexpr std::size_t calls = 8;
  std::vector<Updates> updates(calls);
  std::vector<std::shared_ptr<FakeHTTPClient::Exchange>> exchanges;
  for (std::size_t call = 0; call < calls; ++call) {
    exchanges.push_back(client_.expect());
  }
  runOffMain([&] {
    std::vector<std::future<void>> running;
    for (std::size_t call = 0; call < calls; ++call) {
      running.push_back(std::async(std::launch::async, [&, call] {
        service_.streamRequest({}, {},
                               [&, call](const std::string &answer) { updates[call].push_back(answer); }, {});
      }));
      client_.waitForRequests(call + 1);
    }
    for (std::size_t call = 0; call < calls; ++call) {
      exchanges[call]->respond(200);
    }
    for (std::size_t call = 0; call < calls; ++call) {
      exchanges[call]->push(data("a" + std::to_string(call))).push(data("b")).end();
    }
    for (auto &call : running) {
      call.get();
    }
  });
  for (std::size_t call = 0; call < calls; ++call) {
    const auto first = "a" + std::to_string(call);
    EXPECT_EQ(updates[call], (Updates{first, first + "b", first + "b"}));
  }
}

TEST_F(OpenAIAPIServiceTest, TheConnectionTestSendsAMinimalRequest) {
  keychain_.saveAPIKey(Secret::copyOf("sk-stored"));
  client_.expect(200, {"{}"});
  EXPECT_TRUE(service_.testConnection({}));

  const auto request = client_.requests().at(0);
  EXPECT_EQ(request.headers.at(0).value.reveal(), "Bearer sk-stored");
  EXPECT_EQ(json::parse(request.body),
            json::parse(R"({"model": "gpt-4o-mini", "max_tokens": 10, "stream": false,
                            "messages": [{"role": "user", "content": "Hi"}]})"));
}

TEST_F(OpenAIAPIServiceTest, TheConnectionTestReturnsFalseForAnyOtherStatus) {
  keychain_.saveAPIKey(Secret::copyOf("sk-stored"));
  for (const int status : {401, 201, 429, 500}) {
    client_.expect(status, {"{}"});
    EXPECT_FALSE(service_.testConnection({})) << status;
  }
}

TEST_F(OpenAIAPIServiceTest, TheConnectionTestWithoutAKeyThrowsBeforeAnyNetworkActivity) {
  try {
    service_.testConnection({});
    FAIL();
  } catch (const LumiwrenError &error) {
    EXPECT_EQ(error.errorDescription(),
              "API key not configured. Please set your OpenAI API key in settings.");
  }
  EXPECT_TRUE(client_.requests().empty());
}

TEST_F(OpenAIAPIServiceTest, TheConnectionTestThrowsTransportFailuresAndInvalidResponses) {
  keychain_.saveAPIKey(Secret::copyOf("sk-stored"));
  client_.expectFailure("lost");
  EXPECT_THROW(service_.testConnection({}), TransportError);
  client_.expect()->respond(200).fail("lost in the body");
  EXPECT_THROW(service_.testConnection({}), TransportError);
  client_.expect(0);
  EXPECT_THROW(service_.testConnection({}), LumiwrenError);
}

}  // namespace
}  // namespace lumiwren
