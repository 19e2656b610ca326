#include "platform/linux/recognition/TesseractLibrary.h"

#include "platform/TextRecognizer.h"
#include "platform/linux/LoadedLibrary.h"

namespace lumiwren {
namespace {

constexpr int leptonicaSilent = 6;  // L_SEVERITY_NONE

}  // namespace

TesseractLibrary::TesseractLibrary(const std::string &name) {
  const LoadedLibrary<TextRecognitionError> library(
      name, "Text recognition needs the package libtesseract5.",
      "Text recognition needs version 5 of the package libtesseract5.");
  library.find(create, "TessBaseAPICreate");
  library.find(destroy, "TessBaseAPIDelete");
  library.find(init, "TessBaseAPIInit2");
  library.find(setVariable, "TessBaseAPISetVariable");
  library.find(setPageSegmentation, "TessBaseAPISetPageSegMode");
  library.find(setImage, "TessBaseAPISetImage");
  library.find(setRectangle, "TessBaseAPISetRectangle");
  library.find(setResolution, "TessBaseAPISetSourceResolution");
  library.find(recognize, "TessBaseAPIRecognize");
  library.find(clear, "TessBaseAPIClear");
  library.find(clearPersistentCache, "TessBaseAPIClearPersistentCache");
  library.find(monitorCreate, "TessMonitorCreate");
  library.find(monitorDelete, "TessMonitorDelete");
  library.find(monitorSetCancelFunction, "TessMonitorSetCancelFunc");
  library.find(monitorSetCancelContext, "TessMonitorSetCancelThis");
  library.find(iterator, "TessBaseAPIGetIterator");
  library.find(iteratorDelete, "TessResultIteratorDelete");
  library.find(iteratorNext, "TessResultIteratorNext");
  library.find(iteratorText, "TessResultIteratorGetUTF8Text");
  library.find(iteratorConfidence, "TessResultIteratorConfidence");
  library.find(deleteText, "TessDeleteText");
  library.find(setParallelLevels, "omp_set_max_active_levels");
  // What stands on the screen, or is wrong with its picture, is nobody else's business.
  void (*setMessageSeverity)(int) = nullptr;
  library.find(setMessageSeverity, "setMsgSeverity");
  setMessageSeverity(leptonicaSilent);
}

}  // namespace lumiwren
