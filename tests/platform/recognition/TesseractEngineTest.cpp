#include "platform/linux/recognition/TesseractEngine.h"

#include "base/Task.h"
#include "platform/linux/recognition/RecognitionPage.h"
#include "platform/linux/recognition/TesseractRecognizer.h"
#include "platform/recognition/DrawnText.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace lumiwren {
namespace {

using namespace testing;

/// The folder that has the English data.
std::filesystem::path dataFolder() {
  for (const auto &folder : TesseractRecognizer::languageDataFolders()) {
    if (std::filesystem::exists(folder / "eng.traineddata")) {
      return folder;
    }
  }
  return {};
}

TEST(TesseractEngine, AsksInTheMiddleWhetherItShallGoOn) {
  const TesseractLibrary library("libtesseract.so.5");
  library.setParallelLevels(0);
  TesseractEngine engine(library, dataFolder(), "eng");
  const auto page = recognitionPage(drawWords(36), {});
  engine.setImage(page.image);
  ASSERT_EQ(page.blocks.size(), 1U);
  int asked = 0;
  const auto lines = engine.read(page.blocks[0].box, PageKind::Block, [&] {
    ++asked;
    return false;
  });
  EXPECT_EQ(lines.size(), 3U);
  EXPECT_GT(asked, 3);
  const int enough = asked / 2;
  asked = 0;
  EXPECT_THROW(engine.read(page.blocks[0].box, PageKind::Block, [&] { return ++asked >= enough; }),
               CancellationError);
  EXPECT_LE(asked, enough + 2) << "nothing more is read after it has been told to stop";
  EXPECT_EQ(engine.read(page.blocks[0].box, PageKind::Block, [] { return false; }).size(), 3U);
}

}  // namespace
}  // namespace lumiwren
