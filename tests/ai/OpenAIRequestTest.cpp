#include "ai/OpenAIRequest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace lumiwren {
namespace {

using nlohmann::json;
using namespace std::string_literals;

TEST(OpenAIRequest, EveryFieldIsWrittenUnderItsKey) {
  const OpenAIRequest request{
      .model = "m", .messages = {{"system", "s"}, {"user", "u"}}, .maxTokens = 500, .stream = true};

  EXPECT_EQ(json::parse(request.encode()), json::parse(R"({"model": "m", "max_tokens": 500, "stream": true,
                            "messages": [{"role": "system", "content": "s"},
                                         {"role": "user", "content": "u"}]})"));
}

TEST(OpenAIRequest, ARequestWithoutAnythingIsStillWhole) {
  EXPECT_EQ(json::parse(OpenAIRequest{}.encode()),
            json::parse(R"({"model": "", "max_tokens": 0, "stream": false, "messages": []})"));
}

TEST(OpenAIRequest, TextIsSentVerbatim) {
  const auto text = "  \"quoted\" \\ / \n\t\0 \xC3\xA9 \xF0\x9F\x90\xA6 {text} "s;
  const OpenAIRequest request{.model = "m", .messages = {{"user", text}}, .maxTokens = 1, .stream = true};

  EXPECT_EQ(json::parse(request.encode())["messages"][0]["content"], text);
}

TEST(OpenAIRequest, BytesThatAreNoTextAreReplaced) {
  const OpenAIRequest request{.model = "m",
                              .messages = {{"user",
                                            "a\xFF"
                                            "b\xC3"}},
                              .maxTokens = 1,
                              .stream = true};

  EXPECT_EQ(json::parse(request.encode())["messages"][0]["content"],
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD");
}

}  // namespace
}  // namespace lumiwren
