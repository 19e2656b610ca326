#include "platform/linux/recognition/LanguageReader.h"

#include "platform/TextRecognizer.h"
#include "platform/linux/recognition/LanguageChoice.h"

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>

namespace lumiwren {
namespace {

/// Below this a script is probably not the right one: right ones reach 85 to 96 percent on clear text, wrong
/// ones 20 to 60.
constexpr float doubtfulConfidence = 75;

std::vector<std::string> languagesIn(const std::filesystem::path &folder) {
  std::vector<std::string> languages;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->path().extension() == ".traineddata") {
      languages.push_back(entry->path().stem().string());
    }
  }
  return languages;
}

/// The mean over characters; nothing read is no confidence.
float confidence(const std::vector<RecognizedLine> &lines) {
  double sum = 0;
  double length = 0;
  for (const auto &line : lines) {
    sum += static_cast<double>(line.confidence) * static_cast<double>(line.text.size());
    length += static_cast<double>(line.text.size());
  }
  return length > 0 ? static_cast<float>(sum / length) : 0;
}

}  // namespace

LanguageReader::LanguageReader(const std::string &library,
                               const std::vector<std::filesystem::path> &dataFolders)
    : library_(library) {
  library_.setParallelLevels(0);
  for (const auto &folder : dataFolders) {
    sets_ = languageSets(languagesIn(folder), userLanguages());
    if (!sets_.empty()) {
      dataFolder_ = folder;
      engine(0);
      return;
    }
  }
  throw TextRecognitionError("Text recognition needs the package tesseract-ocr-eng.");
}

std::vector<RecognizedLine> LanguageReader::read(const GreyImage &image,
                                                 const std::function<bool()> &isCancelled) {
  auto best = engine(0).read(image, isCancelled);
  float bestConfidence = confidence(best);
  for (std::size_t set = 1; set < sets_.size() && bestConfidence < doubtfulConfidence; ++set) {
    auto lines = engine(set).read(image, isCancelled);
    if (const float other = confidence(lines); other > bestConfidence) {
      best = std::move(lines);
      bestConfidence = other;
    }
  }
  return best;
}

TesseractEngine &LanguageReader::engine(std::size_t set) {
  auto &engine = engines_[set];
  if (!engine) {
    engine = std::make_unique<TesseractEngine>(library_, dataFolder_, sets_[set]);
  }
  return *engine;
}

}  // namespace lumiwren
