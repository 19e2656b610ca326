#pragma once

#include "platform/Image.h"
#include "platform/TextRecognizer.h"

#include <stop_token>
#include <string>

namespace lumiwren {

/// The text in a picture. Holds no state; not on the main thread.
class OCRManager {
public:
  OCRManager(ImageDecoder &decoder, TextRecognizer &recognizer)
      : decoder_(decoder), recognizer_(recognizer) {}

  /// The recognised lines in reading order, joined by line feeds; never empty. Throws OCRError, and
  /// CancellationError when `token` is stopped.
  std::string extractText(const Image &image, const std::stop_token &token);

private:
  ImageDecoder &decoder_;
  TextRecognizer &recognizer_;
};

}  // namespace lumiwren
