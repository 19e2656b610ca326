#include "ai/OpenAIStreamResponse.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace lumiwren {
namespace {

using namespace std::string_literals;

std::optional<OpenAIStreamResponse> decode(std::string_view encoded) {
  return OpenAIStreamResponse::decode(encoded);
}

TEST(OpenAIStreamResponse, AnEmptyObjectDecodesToARecordWithAllFieldsAbsent) {
  const auto chunk = decode("{}");
  ASSERT_TRUE(chunk);
  EXPECT_FALSE(chunk->id || chunk->object || chunk->created || chunk->model || chunk->choices);
}

TEST(OpenAIStreamResponse, AWholeChunkDecodes) {
  const auto chunk = decode(R"({"id":"chatcmpl-1","object":"chat.completion.chunk","created":1700000000,
    "model":"gpt-4o-mini","system_fingerprint":"fp","choices":[{"index":0,"delta":{"role":"assistant",
    "content":"Hel"},"logprobs":null,"finish_reason":"stop"},{"index":1,"delta":{}}]})");
  ASSERT_TRUE(chunk);
  EXPECT_EQ(chunk->id, "chatcmpl-1");
  EXPECT_EQ(chunk->object, "chat.completion.chunk");
  EXPECT_EQ(chunk->created, 1700000000);
  EXPECT_EQ(chunk->model, "gpt-4o-mini");
  ASSERT_EQ(chunk->choices->size(), 2U);
  EXPECT_EQ(chunk->choices->at(0).index, 0);
  EXPECT_EQ(chunk->choices->at(0).delta->role, "assistant");
  EXPECT_EQ(chunk->choices->at(0).delta->content, "Hel");
  EXPECT_EQ(chunk->choices->at(0).finishReason, "stop");
  EXPECT_EQ(chunk->choices->at(1).index, 1);
}

TEST(OpenAIStreamResponse, AnEmptyDeltaHasNoContent) {
  const auto chunk = decode(R"({"choices":[{"delta":{}}]})");
  ASSERT_TRUE(chunk);
  ASSERT_TRUE(chunk->choices->at(0).delta);
  EXPECT_FALSE(chunk->choices->at(0).delta->content);
}

TEST(OpenAIStreamResponse, AnEmptyContentWithANullFinishReasonIsPresent) {
  const auto chunk = decode(R"({"choices":[{"index":0,"delta":{"content":""},"finish_reason":null}]})");
  ASSERT_TRUE(chunk);
  EXPECT_EQ(chunk->choices->at(0).delta->content, "");
  EXPECT_FALSE(chunk->choices->at(0).finishReason);
}

TEST(OpenAIStreamResponse, NullsAndMissingKeysLeaveFieldsAbsent) {
  for (const auto *const encoded : {
           R"({"id":null,"object":null,"created":null,"model":null,"choices":null})",
           R"({"choices":[]})",
           R"({"choices":[{}]})",
           R"({"choices":[{"index":null,"delta":null,"finish_reason":null}]})",
           R"({"choices":[{"delta":{"role":null,"content":null}}]})",
       }) {
    EXPECT_TRUE(decode(encoded)) << encoded;
  }
  EXPECT_FALSE(decode(R"({"choices":null})")->choices);
  EXPECT_FALSE(decode(R"({"choices":[{"delta":null}]})")->choices->at(0).delta);
}

TEST(OpenAIStreamResponse, AChoicesStringInsteadOfAListFailsAsAWhole) {
  EXPECT_FALSE(decode(R"({"id":"x","choices":"none"})"));
}

TEST(OpenAIStreamResponse, AWrongTypeAnywhereInAKnownKeyFailsAsAWhole) {
  const std::string good = R"("choices":[{"delta":{"content":"x"}}])";
  for (const auto *const bad : {
           R"("id":1)",
           R"("id":true)",
           R"("id":{})",
           R"("id":[])",
           R"("object":1.5)",
           R"("object":[1])",
           R"("created":"now")",
           R"("created":{})",
           R"("created":[])",
           R"("created":false)",
           R"("model":0)",
           R"("model":{"id":"x"})",
       }) {
    EXPECT_FALSE(decode("{" + good + "," + bad + "}")) << bad;
    EXPECT_FALSE(decode("{" + std::string(bad) + "," + good + "}")) << bad;
  }
  for (const auto *const bad : {
           R"({})",
           R"(1)",
           R"(true)",
           R"([1])",
           R"(["x"])",
           R"([null])",
           R"([[]])",
           R"([{"index":"0"}])",
           R"([{"index":[]}])",
           R"([{"index":{}}])",
           R"([{"index":true}])",
           R"([{"delta":"x"}])",
           R"([{"delta":[]}])",
           R"([{"delta":1}])",
           R"([{"delta":true}])",
           R"([{"finish_reason":0}])",
           R"([{"finish_reason":{}}])",
           R"([{"delta":{"role":1}}])",
           R"([{"delta":{"content":1}}])",
           R"([{"delta":{"content":["x"]}}])",
           R"([{"delta":{"content":{"text":"x"}}}])",
           R"([{"delta":{"content":false}}])",
       }) {
    EXPECT_FALSE(decode(R"({"choices":)" + std::string(bad) + "}")) << bad;
  }
}

TEST(OpenAIStreamResponse, AWrongTypeInALaterChoiceFailsAsAWhole) {
  EXPECT_FALSE(decode(R"({"choices":[{"delta":{"content":"x"}},{"delta":{"content":1}}]})"));
  EXPECT_FALSE(decode(R"({"choices":[{"delta":{"content":"x"}},{"index":"1"}]})"));
  EXPECT_FALSE(decode(R"({"choices":[{"delta":{"content":"x"}},null]})"));
}

TEST(OpenAIStreamResponse, UnknownKeysAreIgnoredWhateverTheyHold) {
  for (const auto *const value : {"1", "-1.5e3", "\"x\"", "null", "true", "[]", "{}", "[[{\"choices\":1}]]",
                                  "{\"id\":1,\"choices\":[{\"delta\":{\"content\":7}}]}"}) {
    const auto encoded = R"({"x":)" + std::string(value) + R"(,"choices":[{"x":)" + value +
                         R"(,"delta":{"x":)" + value + R"(,"content":"kept","y":)" + value +
                         R"(}}],"usage":)" + value + "}";
    const auto chunk = decode(encoded);
    ASSERT_TRUE(chunk) << encoded;
    ASSERT_EQ(chunk->choices->size(), 1U) << encoded;
    EXPECT_EQ(chunk->choices->at(0).delta->content, "kept") << encoded;
  }
}

TEST(OpenAIStreamResponse, KeysOfOneLevelMeanNothingOnAnother) {
  const auto chunk = decode(R"({"content":1,"delta":2,"index":"x","role":3,
                               "choices":[{"content":1,"id":2,"choices":3,"delta":{"delta":4,"id":5}}]})");
  ASSERT_TRUE(chunk);
  EXPECT_FALSE(chunk->id);
}

TEST(OpenAIStreamResponse, WholeNumbersMayBeWrittenAsFractionsOrPowers) {
  const struct {
    const char *number;
    std::optional<std::int64_t> value;
  } cases[] = {
      {"0", 0},
      {"-7", -7},
      {"1.0", 1},
      {"1e0", 1},
      {"-2.50E1", -25},
      {"-0", 0},
      {"-0.0", 0},
      {"1e18", 1'000'000'000'000'000'000},
      {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
      {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
      {"1.5", std::nullopt},
      {"1e-1", std::nullopt},
      {"9223372036854775808", std::nullopt},
      {"-9223372036854775809", std::nullopt},
      {"18446744073709551616", std::nullopt},
      {"9.3e18", std::nullopt},
      {"1e300", std::nullopt},
  };
  for (const auto &[number, value] : cases) {
    const auto created = decode(R"({"created":)" + std::string(number) + "}");
    const auto index = decode(R"({"choices":[{"index":)" + std::string(number) + "}]}");
    EXPECT_EQ(created.has_value(), value.has_value()) << number;
    EXPECT_EQ(index.has_value(), value.has_value()) << number;
    if (created && index) {
      EXPECT_EQ(created->created, value) << number;
      EXPECT_EQ(index->choices->at(0).index, value) << number;
    }
  }
}

TEST(OpenAIStreamResponse, OfAKeyThatIsThereTwiceTheLastOneCounts) {
  const auto chunk = decode(R"({"id":"a","id":"b","created":1,"created":null,
      "choices":[{"delta":{"content":"first"}},{}],
      "choices":[{"delta":{"role":"x","content":"y"},"delta":{"content":"second","content":"third"}}]})");
  ASSERT_TRUE(chunk);
  EXPECT_EQ(chunk->id, "b");
  EXPECT_FALSE(chunk->created);
  ASSERT_EQ(chunk->choices->size(), 1U);
  EXPECT_EQ(chunk->choices->at(0).delta->content, "third");
  EXPECT_FALSE(chunk->choices->at(0).delta->role);
}

TEST(OpenAIStreamResponse, WhatIsNoObjectFails) {
  for (const auto *const encoded :
       {"", " ", "null", "true", "1", "1.5", "\"x\"", "[]", "[{}]", "{", "}", "{}}", "{} {}", "{\"id\"}",
        "{\"id\":}", "{\"id\":\"x\",}", "{id:1}", "[DONE]"}) {
    EXPECT_FALSE(decode(encoded)) << encoded;
  }
}

TEST(OpenAIStreamResponse, WhiteSpaceAroundTheObjectIsAllowed) {
  EXPECT_TRUE(decode(" \t{ } \r"));
}

TEST(OpenAIStreamResponse, ContentIsUnescaped) {
  const auto chunk = decode(R"({"choices":[{"delta":{"content":"\"\\\/\b\f\n\r\té\ud83d\udc26\u0000."}}]})");
  ASSERT_TRUE(chunk);
  EXPECT_EQ(chunk->choices->at(0).delta->content, "\"\\/\b\f\n\r\t\xC3\xA9\xF0\x9F\x90\xA6\0."s);
}

TEST(OpenAIStreamResponse, WhatCannotBeTextFails) {
  for (const std::string bad : {R"(\ud83d)", R"(\udc26)", R"(\ud83dx)", R"(\ud83dA)", R"(\x)", "\xFF", "\xC3",
                                "\xED\xA0\xBD", "\n", "\x01"}) {
    EXPECT_FALSE(decode(R"({"choices":[{"delta":{"content":")" + bad + "\"}}]}")) << bad;
  }
}

/// The text of a content that decode() must give, by the other parser's tree; empty where there must be no
/// chunk.
std::optional<std::string> contentInTree(const std::string &encoded) {
  const auto tree = nlohmann::json::parse(encoded, nullptr, false);
  const auto isText = [](const nlohmann::json &object, const char *key) {
    return !object.contains(key) || object[key].is_string() || object[key].is_null();
  };
  const auto isWhole = [](const nlohmann::json &object, const char *key) {
    return !object.contains(key) || object[key].is_number_integer() || object[key].is_null();
  };
  if (!tree.is_object() || !isText(tree, "id") || !isWhole(tree, "created") || !tree.contains("choices")) {
    return std::nullopt;
  }
  const auto &choices = tree["choices"];
  if (!choices.is_array() || choices.size() != 1 || !choices[0].is_object() ||
      !isWhole(choices[0], "index") || !choices[0].contains("delta")) {
    return std::nullopt;
  }
  const auto &delta = choices[0]["delta"];
  const bool hasContent = delta.is_object() && delta.contains("content") && delta["content"].is_string();
  return hasContent ? std::optional(delta["content"].get<std::string>()) : std::nullopt;
}

TEST(OpenAIStreamResponse, ChangedChunksAreReadAsAnotherParserReadsThem) {
  const std::string chunk =
      R"({"id":"a","created":17,"x":[1.5,true,{"y":"z"}],"choices":[{"index":0,"delta":{"content":"h\u00e9 \ud83d\udc26 é"}}]})";
  ASSERT_TRUE(contentInTree(chunk));
  const std::string_view bytes("\"\\{}[]:,0123456789.-+eEu \x00\x1f\x80\xc3\xff", 30);
  std::mt19937 random(1);
  std::size_t read = 0;
  for (int round = 0; round < 20'000; ++round) {
    std::string changed = chunk;
    for (auto count = random() % 3 + 1; count > 0; --count) {
      const std::size_t place = random() % changed.size();
      if (random() % 2 == 0) {
        changed[place] = bytes[random() % bytes.size()];
      } else {
        changed.erase(place, 1);
      }
    }
    const auto decoded = decode(changed);
    const auto content = contentInTree(changed);
    if (content) {
      ASSERT_TRUE(decoded) << changed;
      EXPECT_EQ(decoded->choices->at(0).delta->content, content) << changed;
      ++read;
    } else {
      EXPECT_FALSE(decoded && decoded->choices && decoded->choices->size() == 1 &&
                   decoded->choices->at(0).delta && decoded->choices->at(0).delta->content)
          << changed;
    }
    EXPECT_LE(decoded.has_value(), nlohmann::json::accept(changed)) << changed;
  }
  EXPECT_GT(read, 1000U);  // not all is broken
}

TEST(OpenAIStreamResponse, DeepNestingNeitherCrashesNorMatters) {
  constexpr std::size_t depth = 1'000'000;
  const std::string open(depth, '[');
  const std::string close(depth, ']');
  EXPECT_FALSE(decode(open));
  EXPECT_FALSE(decode("{\"choices\":" + open + close + "}"));
  const auto chunk = decode("{\"x\":" + open + close + R"(,"id":"kept"})");
  ASSERT_TRUE(chunk);
  EXPECT_EQ(chunk->id, "kept");
}

}  // namespace
}  // namespace lumiwren
