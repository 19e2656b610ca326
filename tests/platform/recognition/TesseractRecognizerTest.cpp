#include "platform/linux/recognition/TesseractRecognizer.h"

#include "base/Task.h"
#include "platform/recognition/Bitmaps.h"
#include "platform/recognition/DrawnText.h"
#include "support/Process.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace lumiwren {
namespace {

using namespace std::chrono_literals;
using namespace testing;

using Lines = std::vector<std::string>;

class TesseractRecognizerTest : public ::testing::Test {
public:
  ~TesseractRecognizerTest() override {
    recognizer_.reset();
    EXPECT_TRUE(Task::endAll(patience));
  }

protected:
  TesseractRecognizer &recognizer() { return *recognizer_; }
  void useOptions(const TesseractRecognizer::Options &options) { recognizer_.emplace(options); }
  void drop() { recognizer_.reset(); }

  Lines read(const Bitmap &bitmap, const std::stop_token &token = {}) {
    Lines lines;
    for (const auto &line : recognizer().recognize(bitmap, token)) {
      lines.push_back(line.topCandidate.value_or("(nothing)"));
    }
    return lines;
  }

  std::string failure() {
    try {
      recognizer().recognize(drawLines({"Nobody can read this"}), {});
    } catch (const TextRecognitionError &error) {
      return error.what();
    }
    return "";
  }

private:
  std::optional<TesseractRecognizer> recognizer_{std::in_place};
};

TEST_F(TesseractRecognizerTest, ReadsEveryScheme) {
  for (const auto &[ground, ink] : {std::pair("#ffffff", "#202020"), std::pair("#1e1e1e", "#d4d4d4"),
                                    std::pair("#300a24", "#8ae234"), std::pair("#a02020", "#60e060")}) {
    DrawnLook look;
    look.ground = ground;
    look.ink = ink;
    EXPECT_EQ(read(drawLines({"Open the window, please."}, look)), Lines{"Open the window, please."})
        << ground;
  }
}

TEST_F(TesseractRecognizerTest, ReadsLightAndDarkPartsOfOnePicture) {
  Bitmap bitmap = drawLines({"Dark text on light ground"});
  DrawnLook dark;
  dark.ground = "#202830";
  dark.ink = "#ffffff";
  const Bitmap below = drawLines({"Light text on dark ground"}, dark);
  ASSERT_EQ(bitmap.width, below.width);
  bitmap.rgb.insert(bitmap.rgb.end(), below.rgb.begin(), below.rgb.end());
  bitmap.height += below.height;
  EXPECT_EQ(read(bitmap), (Lines{"Dark text on light ground", "Light text on dark ground"}));
}

TEST_F(TesseractRecognizerTest, ReadsColumnsOneAfterTheOther) {
  DrawnLook look;
  look.width = 700;
  look.height = 100;
  EXPECT_EQ(read(drawText({{12, 24, "The left column is the one that"},
                           {12, 46, "everybody reads before the other,"},
                           {12, 68, "whatever stands in it."},
                           {380, 24, "The right column comes after it,"},
                           {380, 46, "and has as many lines of text as"},
                           {380, 68, "its neighbour on the left."}},
                          look)),
            (Lines{"The left column is the one that", "everybody reads before the other,",
                   "whatever stands in it.", "The right column comes after it,",
                   "and has as many lines of text as", "its neighbour on the left."}));
}

TEST_F(TesseractRecognizerTest, ReadsTablesRowByRow) {
  DrawnLook look;
  look.height = 100;
  EXPECT_EQ(read(drawText({{12, 24, "Apples"},
                           {160, 24, "12"},
                           {280, 24, "4.50"},
                           {12, 48, "Pears"},
                           {160, 48, "7"},
                           {280, 48, "3.20"},
                           {12, 72, "Bread"},
                           {160, 72, "1"},
                           {280, 72, "2.80"}},
                          look)),
            (Lines{"Apples 12 4.50", "Pears 7 3.20", "Bread 1 2.80"}));
}

TEST_F(TesseractRecognizerTest, ReadsLargeTextAsItIs) {
  DrawnLook look;
  look.size = 30;
  look.width = 700;
  EXPECT_EQ(read(drawLines({"Twice as large as usual"}, look)), Lines{"Twice as large as usual"});
}

TEST_F(TesseractRecognizerTest, FindsOutWhichLanguageIsWritten) {
  DrawnLook japanese;
  japanese.font = "Noto-Sans-CJK-JP";
  japanese.size = 18;
  const Lines german{"Die Tür führt über den großen Hof", "zu den älteren Gebäuden."};
  const Lines russian{"Новая библиотека открылась вчера", "в самом центре города."};
  const Lines nippon{"大きなファイルを開くときは、少し時間がかかります。"};
  const Lines english{"The new library opened its doors", "in the middle of the city."};
  EXPECT_EQ(read(drawLines(german)), german);
  EXPECT_EQ(read(drawLines(russian)), russian);
  EXPECT_EQ(read(drawLines(english)), english) << "after another script";
  japanese.width = 600;
  EXPECT_EQ(read(drawLines(nippon, japanese)), nippon);
  EXPECT_EQ(read(drawLines(english)), english) << "after another script";
}

TEST_F(TesseractRecognizerTest, ReadsNamesOfAnotherLanguageWithinEnglish) {
  const Lines names{"Our guests are Jürgen Schröder and Käthe", "Böhm, who came by train this morning."};
  EXPECT_EQ(read(drawLines(names)), names);
}

TEST_F(TesseractRecognizerTest, FindsNoTextOnPlainGroundOfAnySize) {
  for (const auto &[width, height] : {std::pair(1, 1), std::pair(2, 1), std::pair(1, 40),
                                      std::pair(30'000, 2), std::pair(2, 30'000), std::pair(600, 400)}) {
    EXPECT_EQ(read(plainBitmap(width, height, {40, 80, 120})), Lines{}) << width << ' ' << height;
  }
}

TEST_F(TesseractRecognizerTest, SurvivesNoiseOfAnyShape) {
  for (const auto &[width, height] :
       {std::pair(1, 1), std::pair(3, 3), std::pair(400, 300), std::pair(30'000, 2), std::pair(2, 30'000)}) {
    EXPECT_NO_THROW(read(noise(width, height))) << width << ' ' << height;
  }
  const Lines after{"Reading goes on after it."};
  EXPECT_EQ(read(drawLines(after)), after);
}

TEST_F(TesseractRecognizerTest, ReadsManyLines) {
  EXPECT_EQ(read(drawWords(240)).size(), 20U);
}

TEST_F(TesseractRecognizerTest, StopsWhileTheEngineIsLoaded) {
  const Lines text{"Read after a stopped attempt"};
  const Bitmap bitmap = drawLines(text);
  std::stop_source stop;
  recognizer().prepare();
  auto reading = std::async(std::launch::async, [&] { return read(bitmap, stop.get_token()); });
  stop.request_stop();
  EXPECT_EQ(reading.wait_for(2s), std::future_status::ready);
  EXPECT_THROW(reading.get(), CancellationError);
  EXPECT_EQ(read(bitmap), text);
}

TEST_F(TesseractRecognizerTest, GoesOnWithTheNextPictureAfterAStoppedOne) {
  const Lines text{"Short and read at once"};
  const Bitmap shortPicture = drawLines(text);
  const Bitmap &longPicture = manyWords();
  std::stop_source stop;
  auto reading = std::async(std::launch::async, [&] { return read(longPicture, stop.get_token()); });
  EXPECT_EQ(reading.wait_for(1s), std::future_status::timeout);
  stop.request_stop();
  EXPECT_THROW(reading.get(), CancellationError);
  auto next = std::async(std::launch::async, [&] { return read(shortPicture); });
  ASSERT_EQ(next.wait_for(10s), std::future_status::ready);
  EXPECT_EQ(next.get(), text);
}

TEST_F(TesseractRecognizerTest, ServesSeveralThreads) {
  std::vector<std::future<Lines>> readings;
  std::vector<Bitmap> bitmaps;
  for (const auto *const text : {"One of the texts", "Two of the texts", "Three of the texts"}) {
    bitmaps.push_back(drawLines({text}));
  }
  readings.reserve(bitmaps.size());
  for (const auto &bitmap : bitmaps) {
    readings.push_back(std::async(std::launch::async, [&] { return read(bitmap); }));
  }
  EXPECT_EQ(readings[0].get(), Lines{"One of the texts"});
  EXPECT_EQ(readings[1].get(), Lines{"Two of the texts"});
  EXPECT_EQ(readings[2].get(), Lines{"Three of the texts"});
}

TEST_F(TesseractRecognizerTest, GoesWhileSomethingIsRead) {
  const Bitmap &bitmap = manyWords();
  std::stop_source stop;
  auto reading = std::async(std::launch::async, [&] { return read(bitmap, stop.get_token()); });
  EXPECT_EQ(reading.wait_for(1s), std::future_status::timeout);
  stop.request_stop();
  EXPECT_THROW(reading.get(), CancellationError);
  drop();
  EXPECT_TRUE(Task::endAll(10s));
}

TEST_F(TesseractRecognizerTest, LetsTheEngineGoWhenItIsIdle) {
  TesseractRecognizer::Options options;
  options.keepWarm = 1ms;
  useOptions(options);
  EXPECT_FALSE(recognizer().isLoaded());
  const Lines text{"Read again after a pause"};
  const Bitmap bitmap = drawLines(text);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(read(bitmap), text);
    const auto limit = std::chrono::steady_clock::now() + patience;
    while (recognizer().isLoaded() && std::chrono::steady_clock::now() < limit) {
      std::this_thread::yield();
    }
    EXPECT_FALSE(recognizer().isLoaded());
  }
}

TEST_F(TesseractRecognizerTest, KeepsTheEngineWarm) {
  EXPECT_FALSE(recognizer().isLoaded());
  recognizer().prepare();
  EXPECT_TRUE(recognizer().isLoaded());
  read(drawLines({"Once and soon again"}));
  EXPECT_TRUE(recognizer().isLoaded());
}

/// The threads of this process.
std::ptrdiff_t threadCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

TEST_F(TesseractRecognizerTest, RecognizesOnOneThread) {
  const auto before = threadCount();
  read(drawLines({"One thread of its own, and none", "besides it for small products"}));
  EXPECT_EQ(threadCount(), before + 1);
}

TEST_F(TesseractRecognizerTest, NamesThePackageOfTheLibraryThatIsMissing) {
  TesseractRecognizer::Options options;
  options.library = "libtesseract-not-installed.so.5";
  useOptions(options);
  EXPECT_EQ(failure(), "Text recognition needs the package libtesseract5.");
  EXPECT_EQ(failure(), "Text recognition needs the package libtesseract5.") << "once more";
  EXPECT_FALSE(recognizer().isLoaded());
}

TEST_F(TesseractRecognizerTest, NamesThePackageOfOtherLibraries) {
  TesseractRecognizer::Options options;
  options.library = "libpng16.so.16";
  useOptions(options);
  EXPECT_EQ(failure(), "Text recognition needs version 5 of the package libtesseract5.");
}

TEST_F(TesseractRecognizerTest, NamesThePackageOfTheDataThatIsMissing) {
  const TemporaryFolder folder;
  TesseractRecognizer::Options options;
  options.dataFolders = {folder.path() / "not-there", folder.path()};
  useOptions(options);
  EXPECT_EQ(failure(), "Text recognition needs the package tesseract-ocr-eng.");
}

TEST_F(TesseractRecognizerTest, NamesThePackageOfDamagedDataAndSaysNothingElse) {
  const TemporaryFolder folder;
  for (const char *const content : {"", "no data at all"}) {
    std::ofstream(folder.path() / "eng.traineddata") << content;
    TesseractRecognizer::Options options;
    options.dataFolders = {folder.path()};
    useOptions(options);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(failure(), "Text recognition cannot read its data for eng in " + folder.path().string() +
                             ". Reinstall the package tesseract-ocr-eng.");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  }
}

TEST_F(TesseractRecognizerTest, PrintsNothing) {
  ::testing::internal::CaptureStderr();
  ::testing::internal::CaptureStdout();
  read(drawLines({"A secret on the screen"}));
  read(noise(50, 3));
  read(noise(1, 1));
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace lumiwren
