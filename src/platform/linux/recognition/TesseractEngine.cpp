#include "platform/linux/recognition/TesseractEngine.h"

#include "base/Task.h"
#include "platform/TextRecognizer.h"

#include <memory>
#include <utility>

namespace lumiwren {
namespace {

/// Twice what a common screen has, as letters are enlarged to twice their size.
constexpr int resolution = 192;

}  // namespace

TesseractEngine::TesseractEngine(const TesseractLibrary &library, const std::filesystem::path &dataFolder,
                                 const std::string &languages)
    : library_(library), api_(library.create()) {
  library_.setVariable(api_, "debug_file", "/dev/null");
  if (library_.init(api_, dataFolder.c_str(), languages.c_str(), TesseractLibrary::engineLSTM) != 0) {
    library_.destroy(api_);
    throw TextRecognitionError("Text recognition cannot read its data for " + languages + " in " +
                               dataFolder.string() + ". Reinstall the package tesseract-ocr-eng.");
  }
}

TesseractEngine::~TesseractEngine() {
  library_.clearPersistentCache(api_);
  library_.destroy(api_);
}

void TesseractEngine::setImage(const GreyImage &image) {
  library_.setImage(api_, image.pixels.data(), image.width, image.height, 1, image.width);
  library_.setResolution(api_, resolution);
}

void TesseractEngine::clear() {
  library_.clear(api_);
}

std::vector<RecognizedLine> TesseractEngine::read(const PixelBox &box, PageKind kind,
                                                  const std::function<bool()> &isCancelled) {
  library_.setPageSegmentation(api_, kind == PageKind::Block ? TesseractLibrary::pageSegmentationBlock
                                                             : TesseractLibrary::pageSegmentationAuto);
  library_.setRectangle(api_, box.left, box.top, box.width(), box.height());
  const std::unique_ptr<TesseractLibrary::Monitor, decltype(library_.monitorDelete)> monitor(
      library_.monitorCreate(), library_.monitorDelete);
  auto ask = isCancelled;
  library_.monitorSetCancelContext(monitor.get(), &ask);
  library_.monitorSetCancelFunction(
      monitor.get(), [](void *context, int) { return (*static_cast<std::function<bool()> *>(context))(); });
  const bool isRead = library_.recognize(api_, monitor.get()) == 0;
  if (isCancelled()) {
    throw CancellationError();
  }
  std::vector<RecognizedLine> lines;
  const std::unique_ptr<TesseractLibrary::Iterator, decltype(library_.iteratorDelete)> iterator(
      isRead ? library_.iterator(api_) : nullptr, library_.iteratorDelete);
  if (!iterator) {
    return lines;
  }
  constexpr int level = TesseractLibrary::levelTextLine;
  do {
    const std::unique_ptr<char, decltype(library_.deleteText)> text(
        library_.iteratorText(iterator.get(), level), library_.deleteText);
    std::string line = text ? text.get() : "";
    line.erase(line.find_last_not_of(" \n") + 1);
    if (!line.empty()) {
      lines.push_back({std::move(line), library_.iteratorConfidence(iterator.get(), level)});
    }
  } while (library_.iteratorNext(iterator.get(), level) != 0);
  return lines;
}

}  // namespace lumiwren
