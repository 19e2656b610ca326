#include "base/HTMLEntities.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

namespace lumiwren {
namespace {

std::string outputOf(const std::string &command) {
  const std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), &pclose);
  std::string output;
  char buffer[4096];
  for (std::size_t size = 1; pipe && size > 0;) {
    size = fread(buffer, 1, sizeof buffer, pipe.get());
    output.append(buffer, size);
  }
  return output;
}

TEST(HTMLEntities, EveryNameOfTheStandardIsKnown) {
  std::istringstream names(
      outputOf("/usr/bin/python3 -X utf8 -c 'from html.entities import html5\n"
               "for name, text in html5.items():\n"
               "  if name[-1] == \";\": print(name[:-1], text.encode().hex())'"));
  int count = 0;
  for (std::string name, hex; names >> name >> hex; ++count) {
    std::string text;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
      text += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    EXPECT_EQ(htmlEntity(name), text) << name;
  }
  EXPECT_EQ(count, 2125);
}

TEST(HTMLEntities, OtherNamesAreNot) {
  for (const auto *name : {"", "a", "am", "ampe", "Amp", "zwnjx", "zzz", "\xFF", "amp;"}) {
    EXPECT_EQ(htmlEntity(name), "") << name;
  }
}

TEST(HTMLEntities, TheTableIsWhatTheGeneratorWrites) {
  std::ifstream file(LUMIWREN_BASE_SOURCE_DIR "/HTMLEntityTable.inc");
  std::ostringstream table;
  table << file.rdbuf();
  EXPECT_EQ(outputOf(LUMIWREN_BASE_SOURCE_DIR "/tools/generate-html-entities"), table.str());
}

}  // namespace
}  // namespace lumiwren
