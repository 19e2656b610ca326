#include "base/PrintLine.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace lumiwren {

void printLine(std::string_view text) {
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(),
      [](char character) { return static_cast<unsigned char>(character) < 0x20 || character == 0x7F; }, '?');
  line.push_back('\n');
  std::fwrite(line.data(), 1, line.size(), stdout);
  // A session's journal is a pipe, which would keep the line until the program ends.
  std::fflush(stdout);
}

}  // namespace lumiwren
