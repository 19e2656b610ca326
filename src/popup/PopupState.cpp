#include "popup/PopupState.h"

#include <utility>

namespace lumiwren {

void PopupState::setOriginalText(std::string originalText) {
  originalText_ = std::move(originalText);
  changed_.notify();
}

void PopupState::setExplanation(std::optional<std::string> explanation) {
  explanation_ = std::move(explanation);
  changed_.notify();
}

void PopupState::setIsLoading(bool isLoading) {
  isLoading_ = isLoading;
  changed_.notify();
}

void PopupState::setError(std::optional<std::string> error) {
  error_ = std::move(error);
  changed_.notify();
}

void PopupState::addMessage(std::string role, std::string content) {
  conversationHistory_.push_back({.role = std::move(role), .content = std::move(content)});
  changed_.notify();
}

void PopupState::updateMessageContent(std::size_t at, std::string content) {
  if (at < conversationHistory_.size()) {
    conversationHistory_[at].content = std::move(content);
    changed_.notify();
  }
}

void PopupState::removeMessage(std::size_t at) {
  if (at < conversationHistory_.size()) {
    conversationHistory_.erase(conversationHistory_.begin() + static_cast<std::ptrdiff_t>(at));
    changed_.notify();
  }
}

void PopupState::removeAllMessages() {
  conversationHistory_.clear();
  changed_.notify();
}

}  // namespace lumiwren
