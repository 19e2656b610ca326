#pragma once

#include "base/Handle.h"
#include "base/Signal.h"
#include "popup/ConversationMessage.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lumiwren {

/// What the popup shows. Main thread. Observers are told after each change and read what they need; a change
/// does not say what it was.
class PopupState {
public:
  /// The text that the user asked about.
  const std::string &originalText() const { return originalText_; }
  /// The first answer as streamed so far.
  const std::optional<std::string> &explanation() const { return explanation_; }
  /// A request runs, for the first answer or for a follow-up.
  bool isLoading() const { return isLoading_; }
  /// The last failure, in words for the user.
  const std::optional<std::string> &error() const { return error_; }
  /// Every turn, oldest first. The first assistant turn mirrors `explanation`.
  const std::vector<ConversationMessage> &conversationHistory() const { return conversationHistory_; }

  void setOriginalText(std::string originalText);
  void setExplanation(std::optional<std::string> explanation);
  void setIsLoading(bool isLoading);
  void setError(std::optional<std::string> error);

  void addMessage(std::string role, std::string content);
  /// Replaces the content and nothing else of the turn; does nothing when there is no such turn.
  void updateMessageContent(std::size_t at, std::string content);
  /// Does nothing when there is no such turn.
  void removeMessage(std::size_t at);
  void removeAllMessages();

  Handle observe(std::function<void()> observer) { return changed_.observe(std::move(observer)); }

private:
  std::string originalText_;
  std::optional<std::string> explanation_;
  bool isLoading_ = false;
  std::optional<std::string> error_;
  std::vector<ConversationMessage> conversationHistory_;
  Signal<> changed_;
};

}  // namespace lumiwren
