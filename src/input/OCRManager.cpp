#include "input/OCRManager.h"

#include "base/Task.h"
#include "input/OCRError.h"

namespace lumiwren {
namespace {

std::vector<TextObservation> observations(TextRecognizer &recognizer, const Bitmap &bitmap,
                                          const std::stop_token &token) {
  try {
    return recognizer.recognize(bitmap, token);
  } catch (const TextRecognitionError &error) {
    throw OCRError::visionError(error);
  }
}

}  // namespace

std::string OCRManager::extractText(const Image &image, const std::stop_token &token) {
  const auto bitmap = decoder_.bitmap(image);
  throwIfStopped(token);
  if (!bitmap) {
    throw OCRError::invalidImage();
  }
  std::string text;
  bool isFirst = true;
  for (const auto &observation : observations(recognizer_, *bitmap, token)) {
    if (observation.topCandidate) {
      text += isFirst ? "" : "\n";
      text += *observation.topCandidate;
      isFirst = false;
    }
  }
  if (text.empty()) {
    throw OCRError::noTextFound();
  }
  return text;
}

}  // namespace lumiwren
