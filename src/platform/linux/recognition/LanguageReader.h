#pragma once

#include "platform/linux/recognition/TesseractEngine.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lumiwren {

/// Reads pictures in whatever script they are written, of those that language data is installed for. One
/// thread at a time.
class LanguageReader {
public:
  /// Loads the library and the data of the first script. Throws TextRecognitionError.
  LanguageReader(const std::string &library, const std::vector<std::filesystem::path> &dataFolders);

  /// As TesseractEngine::read().
  std::vector<RecognizedLine> read(const GreyImage &image, const std::function<bool()> &isCancelled);

private:
  TesseractEngine &engine(std::size_t set);

  const TesseractLibrary library_;
  std::filesystem::path dataFolder_;
  std::vector<std::string> sets_;
  std::map<std::size_t, std::unique_ptr<TesseractEngine>> engines_;  // by the number of their set
};

}  // namespace lumiwren
