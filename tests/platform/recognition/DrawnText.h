#pragma once

#include "platform/Image.h"

#include <string>
#include <vector>

namespace lumiwren::testing {

struct DrawnLine {
  int x = 12;
  int y = 0;  // of the base line
  std::string text;
};

struct DrawnLook {
  int width = 420;
  int height = 80;
  std::string ground = "#ffffff";
  std::string ink = "#202020";
  std::string font = "DejaVu-Sans";  // as ImageMagick names it
  int size = 15;                     // pixels
};

/// Text on a plain ground, drawn by ImageMagick and decoded as a screen's picture would be.
Bitmap drawText(const std::vector<DrawnLine> &lines, const DrawnLook &look = {});
/// Lines of the same distance.
Bitmap drawLines(const std::vector<std::string> &lines, DrawnLook look = {});
/// As many words as asked for, twelve in a line.
Bitmap drawWords(int count);
/// Eight thousand words, which take longer to read than any test waits. Drawn once.
const Bitmap &manyWords();

}  // namespace lumiwren::testing
