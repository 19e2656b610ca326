#pragma once

#include "platform/linux/recognition/LanguageChoice.h"
#include "platform/linux/recognition/RecognitionPage.h"
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

  /// The lines of a page in reading order. Throws as TesseractEngine::read() does.
  std::vector<RecognizedLine> read(const RecognitionPage &page, const std::function<bool()> &isCancelled);

private:
  class PageReading;

  TesseractEngine &engine(std::size_t set);

  const TesseractLibrary library_;
  std::filesystem::path dataFolder_;
  std::vector<LanguageSet> sets_;
  std::size_t recent_ = 0;                                           // the set that read best the last time
  std::map<std::size_t, std::unique_ptr<TesseractEngine>> engines_;  // by the number of their set
};

}  // namespace lumiwren
