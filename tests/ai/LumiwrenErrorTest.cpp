#include "ai/LumiwrenError.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

TEST(LumiwrenError, AnAPIErrorIsThePrefixAndTheMessage) {
  const auto error = LumiwrenError::apiError("HTTP 500");
  EXPECT_EQ(error.errorDescription(), "API error: HTTP 500");
  EXPECT_EQ(error.kind(), LumiwrenError::Case::ApiError);
}

TEST(LumiwrenError, ANetworkErrorIsThePrefixAndTheUnderlyingDescription) {
  const auto error = LumiwrenError::networkError(std::runtime_error("The wire is cut."));
  EXPECT_EQ(error.errorDescription(), "Network error: The wire is cut.");
  EXPECT_EQ(error.kind(), LumiwrenError::Case::NetworkError);
}

TEST(LumiwrenError, TheOthersHaveFixedTexts) {
  using Case = LumiwrenError::Case;
  const struct {
    LumiwrenError error;
    Case kind;
    const char *description;
  } cases[] = {
      {LumiwrenError::noAPIKey(), Case::NoAPIKey,
       "API key not configured. Please set your OpenAI API key in settings."},
      {LumiwrenError::noTextSelected(), Case::NoTextSelected,
       "No text selected. Please highlight some text and try again."},
      {LumiwrenError::clipboardEmpty(), Case::ClipboardEmpty,
       "Clipboard is empty. Please select some text first."},
      {LumiwrenError::invalidResponse(), Case::InvalidResponse, "Invalid response from API"},
      {LumiwrenError::accessibilityNotGranted(), Case::AccessibilityNotGranted,
       "Accessibility permission required. Please grant access in System Settings > Privacy & Security > "
       "Accessibility."},
  };
  for (const auto &expected : cases) {
    EXPECT_EQ(expected.error.kind(), expected.kind);
    EXPECT_EQ(expected.error.errorDescription(), expected.description);
    EXPECT_STREQ(expected.error.what(), expected.description);
  }
}

}  // namespace
}  // namespace lumiwren
