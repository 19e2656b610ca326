#pragma once

#include "platform/linux/recognition/GreyImage.h"
#include "platform/linux/recognition/TesseractLibrary.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumiwren {

/// A line as the engine reads it.
struct RecognizedLine {
  std::string text;                              // UTF-8, without its line break
  float confidence = 0;                          // percent
  int left = 0, top = 0, right = 0, bottom = 0;  // pixels of the picture that was read
};

/// The engine with the data of some languages. One thread at a time.
class TesseractEngine {
public:
  /// `languages` as Tesseract names them, joined by '+'. Throws TextRecognitionError.
  TesseractEngine(const TesseractLibrary &library, const std::filesystem::path &dataFolder,
                  const std::string &languages);
  TesseractEngine(const TesseractEngine &) = delete;
  TesseractEngine &operator=(const TesseractEngine &) = delete;
  ~TesseractEngine();

  /// The lines in reading order. Dark text on light ground is expected. Asks `isCancelled` at every word, and
  /// throws CancellationError when it is.
  std::vector<RecognizedLine> read(const GreyImage &image, std::function<bool()> isCancelled);

private:
  const TesseractLibrary &library_;
  TesseractLibrary::API *const api_;
};

}  // namespace lumiwren
