#pragma once

#include <stdexcept>
#include <string>

namespace lumiwren {

/// A failure that the user sees. what() is its description.
class LumiwrenError : public std::runtime_error {
public:
  enum class Case {
    NetworkError,
    ApiError,
    NoAPIKey,
    NoTextSelected,
    ClipboardEmpty,
    InvalidResponse,
    AccessibilityNotGranted
  };

  static LumiwrenError networkError(const std::exception &underlying);
  static LumiwrenError apiError(const std::string &message);
  static LumiwrenError noAPIKey();
  static LumiwrenError noTextSelected();
  static LumiwrenError clipboardEmpty();
  static LumiwrenError invalidResponse();
  static LumiwrenError accessibilityNotGranted();

  Case kind() const noexcept { return kind_; }
  std::string errorDescription() const { return what(); }

private:
  LumiwrenError(Case kind, const std::string &description);

  Case kind_;
};

}  // namespace lumiwren
