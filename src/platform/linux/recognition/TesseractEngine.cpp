#include "platform/linux/recognition/TesseractEngine.h"

#include "base/Task.h"
#include "platform/TextRecognizer.h"

#include <memory>
#include <utility>

namespace lumiwren {

TesseractEngine::TesseractEngine(const TesseractLibrary &library, const std::filesystem::path &dataFolder,
                                 const std::string &languages)
    : library_(library), api_(library.create()) {
  library_.setVariable(api_, "debug_file", "/dev/null");
  if (library_.init(api_, dataFolder.c_str(), languages.c_str(), TesseractLibrary::engineLSTM) != 0) {
    library_.destroy(api_);
    throw TextRecognitionError("Text recognition cannot read its data for " + languages + " in " +
                               dataFolder.string() + ". Reinstall the package tesseract-ocr-eng.");
  }
  library_.setPageSegmentation(api_, TesseractLibrary::pageSegmentationAuto);
}

TesseractEngine::~TesseractEngine() {
  library_.clearPersistentCache(api_);
  library_.destroy(api_);
}

std::vector<RecognizedLine> TesseractEngine::read(const GreyImage &image, std::function<bool()> isCancelled) {
  library_.setImage(api_, image.pixels.data(), image.width, image.height, 1, image.width);
  library_.setResolution(api_, image.resolution);
  const std::unique_ptr<TesseractLibrary::Monitor, decltype(library_.monitorDelete)> monitor(
      library_.monitorCreate(), library_.monitorDelete);
  library_.monitorSetCancelContext(monitor.get(), &isCancelled);
  library_.monitorSetCancelFunction(
      monitor.get(), [](void *context, int) { return (*static_cast<std::function<bool()> *>(context))(); });
  const bool failed = library_.recognize(api_, monitor.get()) != 0;

  std::vector<RecognizedLine> lines;
  if (!failed && !isCancelled()) {
    const std::unique_ptr<TesseractLibrary::Iterator, decltype(library_.iteratorDelete)> iterator(
        library_.iterator(api_), library_.iteratorDelete);
    constexpr int level = TesseractLibrary::levelTextLine;
    if (iterator) {
      do {
        const std::unique_ptr<char, decltype(library_.deleteText)> text(
            library_.iteratorText(iterator.get(), level), library_.deleteText);
        RecognizedLine line;
        if (text && library_.pageBoundingBox(library_.iteratorPage(iterator.get()), level, &line.left,
                                             &line.top, &line.right, &line.bottom) != 0) {
          line.text = text.get();
          line.text.erase(line.text.find_last_not_of(" \n") + 1);
          line.confidence = library_.iteratorConfidence(iterator.get(), level);
          lines.push_back(std::move(line));
        }
      } while (library_.iteratorNext(iterator.get(), level) != 0);
    }
  }
  library_.clear(api_);
  if (isCancelled()) {
    throw CancellationError();
  }
  return lines;
}

}  // namespace lumiwren
