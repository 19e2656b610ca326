#include "ai/LumiwrenError.h"

namespace lumiwren {

LumiwrenError::LumiwrenError(Case kind, const std::string &description)
    : std::runtime_error(description), kind_(kind) {}

LumiwrenError LumiwrenError::networkError(const std::exception &underlying) {
  return {Case::NetworkError, std::string("Network error: ") + underlying.what()};
}

LumiwrenError LumiwrenError::apiError(const std::string &message) {
  return {Case::ApiError, "API error: " + message};
}

LumiwrenError LumiwrenError::noAPIKey() {
  return {Case::NoAPIKey, "API key not configured. Please set your OpenAI API key in settings."};
}

LumiwrenError LumiwrenError::noTextSelected() {
  return {Case::NoTextSelected, "No text selected. Please highlight some text and try again."};
}

LumiwrenError LumiwrenError::clipboardEmpty() {
  return {Case::ClipboardEmpty, "Clipboard is empty. Please select some text first."};
}

LumiwrenError LumiwrenError::invalidResponse() {
  return {Case::InvalidResponse, "Invalid response from API"};
}

LumiwrenError LumiwrenError::accessibilityNotGranted() {
  return {Case::AccessibilityNotGranted,
          "Accessibility permission required. Please grant access in System Settings > Privacy & Security > "
          "Accessibility."};
}

}  // namespace lumiwren
