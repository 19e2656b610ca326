#pragma once

#include <stdexcept>
#include <string>

namespace lumiwren {

/// Why a picture gave no text, as the user sees it. what() is its description.
class OCRError : public std::runtime_error {
public:
  enum class Case { VisionError, InvalidImage, NoTextFound };

  static OCRError visionError(const std::exception &underlying);
  static OCRError invalidImage();
  static OCRError noTextFound();

  Case kind() const noexcept { return kind_; }
  std::string errorDescription() const { return what(); }

private:
  OCRError(Case kind, const std::string &description);

  Case kind_;
};

}  // namespace lumiwren
