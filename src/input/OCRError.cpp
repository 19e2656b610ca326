#include "input/OCRError.h"

namespace lumiwren {

OCRError::OCRError(Case kind, const std::string &description)
    : std::runtime_error(description), kind_(kind) {}

OCRError OCRError::visionError(const std::exception &underlying) {
  return {Case::VisionError, std::string("OCR error: ") + underlying.what()};
}

OCRError OCRError::invalidImage() {
  return {Case::InvalidImage, "Could not process the captured image."};
}

OCRError OCRError::noTextFound() {
  return {Case::NoTextFound, "No text found in the selected region."};
}

}  // namespace lumiwren
