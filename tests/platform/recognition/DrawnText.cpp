#include "platform/recognition/DrawnText.h"

#include "platform/linux/recognition/PNGDecoder.h"
#include "support/Process.h"

#include <array>
#include <stdexcept>
#include <utility>

namespace lumiwren::testing {

Bitmap drawText(const std::vector<DrawnLine> &lines, const DrawnLook &look) {
  std::vector<std::string> command{"convert",
                                   "-size",
                                   std::to_string(look.width) + "x" + std::to_string(look.height),
                                   "xc:" + look.ground,
                                   "-fill",
                                   look.ink,
                                   "-font",
                                   look.font,
                                   "-pointsize",
                                   std::to_string(look.size)};
  for (const auto &line : lines) {
    command.insert(command.end(),
                   {"-annotate", "+" + std::to_string(line.x) + "+" + std::to_string(line.y), line.text});
  }
  command.emplace_back("png:-");
  Process convert(std::move(command));
  const auto file = convert.readAll().value();
  const auto bitmap = PNGDecoder().bitmap({{file.begin(), file.end()}});
  if (!bitmap) {
    throw std::runtime_error("convert draws no picture");
  }
  return *bitmap;
}

Bitmap drawLines(const std::vector<std::string> &lines, DrawnLook look) {
  const int distance = look.size * 3 / 2;
  std::vector<DrawnLine> placed;
  for (const auto &line : lines) {
    placed.push_back({12, distance * (static_cast<int>(placed.size()) + 1), line});
  }
  look.height = distance * (static_cast<int>(lines.size()) + 1);
  return drawText(placed, look);
}

Bitmap drawWords(int count) {
  constexpr std::array<const char *, 7> words{"water",  "stone",   "forest", "letter",
                                              "window", "morning", "harbour"};
  std::vector<std::string> lines;
  for (int word = 0; word < count; ++word) {
    if (word % 12 == 0) {
      lines.emplace_back();
    } else {
      lines.back() += ' ';
    }
    lines.back() += words[static_cast<std::size_t>(word * 5 + word / 12) % words.size()];
  }
  DrawnLook look;
  look.width = 900;
  return drawLines(lines, look);
}

const Bitmap &manyWords() {
  static const Bitmap words = drawWords(8000);
  return words;
}

}  // namespace lumiwren::testing
