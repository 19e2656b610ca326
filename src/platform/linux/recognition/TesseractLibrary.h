#pragma once

#include <string>

namespace lumiwren {

/// The functions of Tesseract's C interface that are used here, from the library in memory. Its headers are
/// not needed: the interface is stable within a major version, and has only opaque pointers and numbers.
struct TesseractLibrary {
  struct API;
  struct Monitor;
  struct Iterator;

  static constexpr int engineLSTM = 1;
  static constexpr int pageSegmentationAuto = 3;
  static constexpr int pageSegmentationBlock = 6;
  static constexpr int levelTextLine = 2;

  /// Loads the library, which stays in memory. Throws TextRecognitionError.
  explicit TesseractLibrary(const std::string &name);

  API *(*create)();
  void (*destroy)(API *);
  int (*init)(API *, const char *dataFolder, const char *languages, int engine);  // not 0 when it fails
  int (*setVariable)(API *, const char *name, const char *value);
  void (*setPageSegmentation)(API *, int mode);
  void (*setImage)(API *, const unsigned char *pixels, int width, int height, int bytesPerPixel,
                   int bytesPerLine);
  void (*setRectangle)(API *, int left, int top, int width, int height);
  void (*setResolution)(API *, int pixelsPerInch);
  int (*recognize)(API *, Monitor *);  // not 0 when it fails
  void (*clear)(API *);
  void (*clearPersistentCache)(API *);

  Monitor *(*monitorCreate)();
  void (*monitorDelete)(Monitor *);
  void (*monitorSetCancelFunction)(Monitor *, bool (*)(void *context, int words));
  void (*monitorSetCancelContext)(Monitor *, void *context);

  Iterator *(*iterator)(API *);
  void (*iteratorDelete)(Iterator *);
  int (*iteratorNext)(Iterator *, int level);
  char *(*iteratorText)(const Iterator *, int level);
  float (*iteratorConfidence)(const Iterator *, int level);
  void (*deleteText)(const char *);

  /// OpenMP's: parallel regions of the calling thread have this many levels. With none they run on the
  /// thread alone; shared among cores, the small products of recognition take four times as long and more.
  void (*setParallelLevels)(int);
};

}  // namespace lumiwren
