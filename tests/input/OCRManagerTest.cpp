#include "input/OCRManager.h"

#include "base/Task.h"
#include "input/OCRError.h"
#include "platform/testing/FakeImageDecoder.h"
#include "platform/testing/FakeTextRecognizer.h"

#include <gtest/gtest.h>

#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace lumiwren {
namespace {

class OCRManagerTest : public ::testing::Test {
protected:
  std::string extract() { return manager.extractText(image, stop.get_token()); }
  /// What the user sees of the failure, and its kind.
  void expectFailure(OCRError::Case kind, const std::string &description) {
    try {
      extract();
      ADD_FAILURE() << "no error";
    } catch (const OCRError &error) {
      EXPECT_EQ(error.kind(), kind);
      EXPECT_EQ(error.errorDescription(), description);
    }
  }

  testing::FakeImageDecoder decoder;
  testing::FakeTextRecognizer recognizer;
  OCRManager manager{decoder, recognizer};
  const Image image{{1, 2, 3}};
  std::stop_source stop;
};

TEST_F(OCRManagerTest, TwoLinesAreJoinedByOneLineFeedInTheRecognizersOrder) {
  recognizer.setLines({"second", "first"});
  EXPECT_EQ(extract(), "second\nfirst");
}

TEST_F(OCRManagerTest, RecognizesThePixelsOfThePicture) {
  decoder.show(Bitmap{2, 1, {1, 2, 3, 4, 5, 6}});
  recognizer.setLines({"text"});
  extract();
  ASSERT_EQ(decoder.images().size(), 1U);
  EXPECT_EQ(decoder.images()[0].file, image.file);
  ASSERT_EQ(recognizer.bitmaps().size(), 1U);
  EXPECT_EQ(recognizer.bitmaps()[0].width, 2);
  EXPECT_EQ(recognizer.bitmaps()[0].rgb, (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6}));
}

TEST_F(OCRManagerTest, TheTextIsNotTrimmed) {
  recognizer.setLines({"  indented ", ""});
  EXPECT_EQ(extract(), "  indented \n");
}

TEST_F(OCRManagerTest, LinesWithoutACandidateAreLeftOut) {
  recognizer.setLines({std::nullopt, "one", std::nullopt, "two", std::nullopt});
  EXPECT_EQ(extract(), "one\ntwo");
}

TEST_F(OCRManagerTest, ARegionWithoutTextYieldsNoTextFound) {
  recognizer.setLines({});
  expectFailure(OCRError::Case::NoTextFound, "No text found in the selected region.");
}

TEST_F(OCRManagerTest, OnlyEmptyTextYieldsNoTextFound) {
  recognizer.setLines({"", std::nullopt});
  expectFailure(OCRError::Case::NoTextFound, "No text found in the selected region.");
}

TEST_F(OCRManagerTest, APictureWithoutPixelsIsInvalid) {
  decoder.show(std::nullopt);
  expectFailure(OCRError::Case::InvalidImage, "Could not process the captured image.");
  EXPECT_TRUE(recognizer.bitmaps().empty());
}

TEST_F(OCRManagerTest, AFailureOfTheRecognizerIsCarriedOn) {
  recognizer.setError("Something is missing.");
  expectFailure(OCRError::Case::VisionError, "OCR error: Something is missing.");
}

TEST_F(OCRManagerTest, EndsWithItsTask) {
  recognizer.setSilent(true);
  std::jthread canceller([&] {
    recognizer.waitForCallers();
    stop.request_stop();
  });
  EXPECT_THROW(extract(), CancellationError);
}

TEST_F(OCRManagerTest, AStoppedTaskRecognizesNothing) {
  stop.request_stop();
  EXPECT_THROW(extract(), CancellationError);
  EXPECT_TRUE(recognizer.bitmaps().empty());
}

}  // namespace
}  // namespace lumiwren
