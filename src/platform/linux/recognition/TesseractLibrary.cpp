#include "platform/linux/recognition/TesseractLibrary.h"

#include "platform/TextRecognizer.h"

#include <dlfcn.h>

namespace lumiwren {
namespace {

constexpr int leptonicaSilent = 6;  // L_SEVERITY_NONE

}  // namespace

TesseractLibrary::TesseractLibrary(const std::string &name) {
  void *const library = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (library == nullptr) {
    throw TextRecognitionError("Text recognition needs the package libtesseract5.");
  }
  const auto find = [&]<typename Function>(Function &function, const char *symbol) {
    function = reinterpret_cast<Function>(dlsym(library, symbol));
    if (function == nullptr) {
      throw TextRecognitionError("Text recognition needs version 5 of the package libtesseract5.");
    }
  };
  find(create, "TessBaseAPICreate");
  find(destroy, "TessBaseAPIDelete");
  find(init, "TessBaseAPIInit2");
  find(setVariable, "TessBaseAPISetVariable");
  find(setPageSegmentation, "TessBaseAPISetPageSegMode");
  find(setImage, "TessBaseAPISetImage");
  find(setRectangle, "TessBaseAPISetRectangle");
  find(setResolution, "TessBaseAPISetSourceResolution");
  find(recognize, "TessBaseAPIRecognize");
  find(clear, "TessBaseAPIClear");
  find(clearPersistentCache, "TessBaseAPIClearPersistentCache");
  find(monitorCreate, "TessMonitorCreate");
  find(monitorDelete, "TessMonitorDelete");
  find(monitorSetCancelFunction, "TessMonitorSetCancelFunc");
  find(monitorSetCancelContext, "TessMonitorSetCancelThis");
  find(iterator, "TessBaseAPIGetIterator");
  find(iteratorDelete, "TessResultIteratorDelete");
  find(iteratorNext, "TessResultIteratorNext");
  find(iteratorText, "TessResultIteratorGetUTF8Text");
  find(iteratorConfidence, "TessResultIteratorConfidence");
  find(deleteText, "TessDeleteText");
  find(setParallelLevels, "omp_set_max_active_levels");
  // What stands on the screen, or is wrong with its picture, is nobody else's business.
  void (*setMessageSeverity)(int) = nullptr;
  find(setMessageSeverity, "setMsgSeverity");
  setMessageSeverity(leptonicaSilent);
}

}  // namespace lumiwren
