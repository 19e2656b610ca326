#include "popup/PopupState.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

TEST(PopupState, IsEmptyAtFirst) {
  const PopupState state;
  EXPECT_EQ(state.originalText(), "");
  EXPECT_EQ(state.explanation(), std::nullopt);
  EXPECT_FALSE(state.isLoading());
  EXPECT_EQ(state.error(), std::nullopt);
  EXPECT_TRUE(state.conversationHistory().empty());
}

TEST(PopupState, AddMessageAppendsATurnWithAnIdentifierOfItsOwn) {
  PopupState state;
  state.addMessage("assistant", "A");
  state.addMessage("user", "Q");
  const auto &history = state.conversationHistory();
  ASSERT_EQ(history.size(), 2U);
  EXPECT_EQ(history[0].role, "assistant");
  EXPECT_EQ(history[1].content, "Q");
  EXPECT_NE(history[0].id, history[1].id);
}

TEST(PopupState, UpdateMessageContentKeepsIdentifierAndRole) {
  PopupState state;
  state.addMessage("assistant", "A");
  const auto before = state.conversationHistory()[0];
  state.updateMessageContent(0, "AB");
  EXPECT_EQ(state.conversationHistory()[0].id, before.id);
  EXPECT_EQ(state.conversationHistory()[0].role, "assistant");
  EXPECT_EQ(state.conversationHistory()[0].content, "AB");
}

TEST(PopupState, UpdateMessageContentAtTheNumberOfMessagesDoesNothing) {
  PopupState state;
  state.addMessage("assistant", "A");
  int changes = 0;
  const auto observation = state.observe([&] { ++changes; });
  state.updateMessageContent(1, "B");
  EXPECT_EQ(state.conversationHistory().size(), 1U);
  EXPECT_EQ(state.conversationHistory()[0].content, "A");
  EXPECT_EQ(changes, 0);
}

TEST(PopupState, EveryChangeIsToldToObservers) {
  PopupState state;
  int changes = 0;
  const auto observation = state.observe([&] { ++changes; });
  state.setOriginalText("text");
  state.setExplanation("answer");
  state.setIsLoading(true);
  state.setError("failure");
  state.addMessage("assistant", "answer");
  state.updateMessageContent(0, "answers");
  state.removeMessage(0);
  state.removeAllMessages();
  EXPECT_EQ(changes, 8);
}

}  // namespace
}  // namespace lumiwren
