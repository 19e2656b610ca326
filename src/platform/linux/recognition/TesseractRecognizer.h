#pragma once

#include "platform/TextRecognizer.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace lumiwren {

/// Reads text with Tesseract 5, which is loaded when it is first wanted and let go of when it has not been
/// used for a while: neither starting nor idling costs anything. The engine has a thread of its own, a Task,
/// which ends with it; callers only wait, so that a stopped one leaves at once.
class TesseractRecognizer : public TextRecognizer {
public:
  struct Options {
    /// The library, as the dynamic loader finds it.
    std::string library = "libtesseract.so.5";
    /// Where language data may be; the first folder that has any is used.
    std::vector<std::filesystem::path> dataFolders = languageDataFolders();
    /// How long the engine stays in memory after its last use.
    std::chrono::milliseconds keepWarm = std::chrono::minutes(3);
  };

  TesseractRecognizer();
  explicit TesseractRecognizer(Options options);
  TesseractRecognizer(const TesseractRecognizer &) = delete;
  TesseractRecognizer &operator=(const TesseractRecognizer &) = delete;
  ~TesseractRecognizer() override;

  void prepare() override;
  std::vector<TextObservation> recognize(const Bitmap &bitmap, const std::stop_token &token) override;

  /// Whether the engine is in memory, or on its way there.
  bool isLoaded() const;

  /// TESSDATA_PREFIX, when set, then where distributions put the data.
  static std::vector<std::filesystem::path> languageDataFolders();

private:
  struct Shared;
  const std::shared_ptr<Shared> shared_;
};

}  // namespace lumiwren
