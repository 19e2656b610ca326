#include "platform/linux/recognition/LanguageReader.h"

#include "platform/TextRecognizer.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

namespace lumiwren {
namespace {

/// The right script reaches 88 to 97 percent on clear text, a wrong one 20 to 70.
constexpr float goodConfidence = 80;
/// English prose mostly reaches more; English program text and other languages' prose do not.
constexpr float certainConfidence = 95;
/// Another language's own data is better than English by this much and more, or finds accents; on program
/// text neither is the case.
constexpr float clearlyBetter = 5;

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

/// Whether there are letters of U+00C0 to U+024F.
bool hasAccents(const std::vector<RecognizedLine> &lines) {
  return std::any_of(lines.begin(), lines.end(), [](const auto &line) {
    return std::any_of(line.text.begin(), line.text.end(), [](char byte) {
      return static_cast<unsigned char>(byte) >= 0xC3 && static_cast<unsigned char>(byte) <= 0xC9;
    });
  });
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

/// Reads one page, each block in the script that fits it best.
class LanguageReader::PageReading {
public:
  PageReading(LanguageReader &reader, const RecognitionPage &page, const std::function<bool()> &isCancelled)
      : reader_(reader), page_(page), isCancelled_(isCancelled) {}

  ~PageReading() {
    // What the picture shows is not kept.
    for (const auto set : prepared_) {
      reader_.engine(set).clear();
    }
  }
  PageReading(const PageReading &) = delete;
  PageReading &operator=(const PageReading &) = delete;

  std::vector<RecognizedLine> read(const TextBlock &block) {
    std::size_t best = reader_.recent_;
    // Other scripts' data reads Latin letters with confidence, too, so these are looked for first.
    if (best != 0 && !isForAccents(best) && confidence(read(0, block.sample)) >= goodConfidence) {
      best = 0;
    }
    auto lines = read(best, block.box);
    if (confidence(lines) < goodConfidence) {
      retry(bestForSample(block.sample, best, confidence(lines)), block, best, lines);
    }
    if (best == 0 && isOtherLanguage(block, lines)) {
      retry(1, block, best, lines);
    }
    if (confidence(lines) >= goodConfidence) {
      reader_.recent_ = isForAccents(best) && !hasAccents(lines) ? 0 : best;
    }
    return lines;
  }

private:
  bool isForAccents(std::size_t set) const { return reader_.sets_[set].isForAccents; }

  /// Whether what the first set has read is rather for the one for accents.
  bool isOtherLanguage(const TextBlock &block, const std::vector<RecognizedLine> &lines) {
    if (reader_.sets_.size() == 1 || !isForAccents(1)) {
      return false;
    }
    if (hasAccents(lines)) {
      return true;
    }
    const float sure = confidence(lines);
    if (sure >= certainConfidence) {
      return false;
    }
    const auto sample = read(1, block.sample);
    return hasAccents(sample) || confidence(sample) >= sure + clearlyBetter;
  }

  /// Takes what `other` reads when that is more likely.
  void retry(std::size_t other, const TextBlock &block, std::size_t &best,
             std::vector<RecognizedLine> &lines) {
    if (other != best) {
      auto otherLines = read(other, block.box);
      if (confidence(otherLines) >= confidence(lines)) {
        lines = std::move(otherLines);
        best = other;
      }
    }
  }

  std::size_t bestForSample(const PixelBox &sample, std::size_t best, float bestConfidence) {
    const std::size_t first = best;
    for (std::size_t set = 0; set < reader_.sets_.size() && bestConfidence < goodConfidence; ++set) {
      const float here = set == first ? 0 : confidence(read(set, sample));
      if (here > bestConfidence) {
        best = set;
        bestConfidence = here;
      }
    }
    return best;
  }

  std::vector<RecognizedLine> read(std::size_t set, const PixelBox &box) {
    auto &engine = reader_.engine(set);
    if (std::find(prepared_.begin(), prepared_.end(), set) == prepared_.end()) {
      engine.setImage(page_.image);
      prepared_.push_back(set);
    }
    return engine.read(box, page_.isLaidOut ? PageKind::Block : PageKind::Unknown, isCancelled_);
  }

  LanguageReader &reader_;
  const RecognitionPage &page_;
  const std::function<bool()> &isCancelled_;
  std::vector<std::size_t> prepared_;  // the sets whose engines have the picture
};

std::vector<RecognizedLine> LanguageReader::read(const RecognitionPage &page,
                                                 const std::function<bool()> &isCancelled) {
  PageReading reading(*this, page, isCancelled);
  std::vector<RecognizedLine> lines;
  for (const auto &block : page.blocks) {
    auto more = reading.read(block);
    std::move(more.begin(), more.end(), std::back_inserter(lines));
  }
  return lines;
}

TesseractEngine &LanguageReader::engine(std::size_t set) {
  auto &engine = engines_[set];
  if (!engine) {
    engine = std::make_unique<TesseractEngine>(library_, dataFolder_, sets_[set].languages);
  }
  return *engine;
}

}  // namespace lumiwren
