#include "ai/LumiwrenError.h"
#include "ai/OpenAIRequest.h"
#include "popup/PopupTesting.h"

#include <gmock/gmock.h>

namespace lumiwren {
namespace {

class FollowUp : public testing::PopupTest {
protected:
  void showAnswer() {
    show();
    update("A");
  }
  std::vector<std::string> turns() {
    std::vector<std::string> result;
    for (const auto &message : history()) {
      result.push_back(message.role + ": " + message.content);
    }
    return result;
  }
  using Turns = std::vector<std::string>;
};

TEST_F(FollowUp, TheEmptyQuestionChangesNothing) {
  showAnswer();
  controller.sendFollowUp("");
  EXPECT_EQ(turns(), Turns{"assistant: A"});
  EXPECT_FALSE(state().isLoading());
  EXPECT_TRUE(http.requests().empty());
}

TEST_F(FollowUp, IsLoadingWithTheQuestionAndAnEmptyTurnWhileItRuns) {
  showAnswer();
  update("A", false, "failure");
  const auto exchange = http.expect();
  controller.sendFollowUp("Q");
  EXPECT_EQ(turns(), (Turns{"assistant: A", "user: Q", "assistant: "}));
  EXPECT_TRUE(state().isLoading());
  EXPECT_EQ(state().error(), std::nullopt);
  exchange->respond(200).push(chunk("par"));
  ASSERT_TRUE(runUntil([&] { return history().back().content == "par"; }));
  EXPECT_TRUE(state().isLoading());
  exchange->end();
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
}

TEST_F(FollowUp, SendsTheSystemPromptTheHistoryAndTheQuestionAndAppendsTheAnswer) {
  showAnswer();
  http.expect(200, {chunk("B"), chunk("C"), "data: [DONE]\n\n"});
  controller.sendFollowUp("Q");
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
  EXPECT_EQ(turns(), (Turns{"assistant: A", "user: Q", "assistant: BC"}));
  EXPECT_EQ(state().explanation(), "A");
  ASSERT_EQ(http.requests().size(), 1U);
  const OpenAIRequest expected{
      .model = service.model(),
      .messages = {{"system",
                    "You are a helpful assistant that explains text. The user originally asked about the "
                    "following text:\n\n\"source\"\n\nContinue the conversation and answer any follow-up "
                    "questions about this text."},
                   {"assistant", "A"},
                   {"user", "Q"}},
      .maxTokens = 500,
      .stream = true};
  EXPECT_EQ(http.requests()[0].body, expected.encode());
}

TEST_F(FollowUp, AnAnswerWithoutTextLeavesItsTurnEmpty) {
  showAnswer();
  http.expect(200, {"data: [DONE]\n\n"});
  controller.sendFollowUp("Q");
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
  EXPECT_EQ(turns(), (Turns{"assistant: A", "user: Q", "assistant: "}));
  EXPECT_EQ(state().error(), std::nullopt);
}

TEST_F(FollowUp, AFailureKeepsTheQuestionAndShowsItsText) {
  showAnswer();
  const auto exchange = http.expect();
  exchange->respond(200).push(chunk("half"));
  exchange->fail("The connection broke off.");
  controller.sendFollowUp("Q");
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
  EXPECT_EQ(turns(), (Turns{"assistant: A", "user: Q"}));
  EXPECT_THAT(state().error().value_or(""), ::testing::HasSubstr("The connection broke off."));
}

TEST_F(FollowUp, WithoutAStoredKeyFailsAndRemovesOnlyThePlaceholder) {
  keychain.deleteAPIKey();
  showAnswer();
  controller.sendFollowUp("Q");
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
  EXPECT_EQ(turns(), (Turns{"assistant: A", "user: Q"}));
  EXPECT_EQ(state().error(), LumiwrenError::noAPIKey().errorDescription());
  EXPECT_TRUE(http.requests().empty());
}

TEST_F(FollowUp, RunsToItsEndWhenThePanelIsGone) {
  showAnswer();
  const auto exchange = http.expect();
  controller.sendFollowUp("Q");
  controller.dismiss();
  queue.runPending();
  ASSERT_FALSE(controller.panel());
  exchange->respond(200).push(chunk("late")).end();
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
  EXPECT_EQ(history().back().content, "late");
}

TEST_F(FollowUp, AfterFollowUpsTheFirstAnswerIsNoLongerRewrittenInTheHistory) {
  showAnswer();
  http.expect(200, {chunk("B"), "data: [DONE]\n\n"});
  controller.sendFollowUp("Q");
  ASSERT_TRUE(runUntil([&] { return !state().isLoading(); }));
  update("A2");
  EXPECT_EQ(state().explanation(), "A2");
  EXPECT_EQ(turns(), (Turns{"assistant: A", "user: Q", "assistant: B"}));
}

}  // namespace
}  // namespace lumiwren
