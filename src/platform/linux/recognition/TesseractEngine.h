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
  std::string text;      // UTF-8, without its line break; never empty
  float confidence = 0;  // percent
};

/// What the engine is told about the picture.
enum class PageKind {
  Block,    // lines of one block, one below the other
  Unknown,  // anything
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

  /// The picture that read() reads from, until clear().
  void setImage(const GreyImage &image);
  void clear();
  /// The lines in a part of the picture. Asks `isCancelled` at every word, and throws CancellationError when
  /// it is.
  std::vector<RecognizedLine> read(const PixelBox &box, PageKind kind,
                                   const std::function<bool()> &isCancelled);

private:
  const TesseractLibrary &library_;
  TesseractLibrary::API *const api_;
};

}  // namespace lumiwren
