#include "base/Task.h"
#include "platform/linux/recognition/TesseractRecognizer.h"
#include "platform/recognition/DrawnText.h"
#include "platform/testing/FakeTextRecognizer.h"
#include "support/Process.h"

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

namespace lumiwren::testing {
namespace {

/// What the fake promises to the tests that use it, the real recognizer does.
class RealRecognizer {
public:
  TextRecognizer &recognizer() { return recognizer_; }
  Bitmap pictureOf(const std::vector<std::string> &lines) { return drawLines(lines); }
  /// A picture that takes longer than a test waits.
  Bitmap endlessPicture() { return manyWords(); }

private:
  TesseractRecognizer recognizer_;
};

class FakeRecognizer {
public:
  TextRecognizer &recognizer() { return recognizer_; }
  Bitmap pictureOf(const std::vector<std::string> &lines) {
    recognizer_.setLines({lines.begin(), lines.end()});
    return {1, 1, {0, 0, 0}};
  }
  Bitmap endlessPicture() {
    recognizer_.setSilent(true);
    return {1, 1, {0, 0, 0}};
  }

private:
  FakeTextRecognizer recognizer_;
};

template <typename World>
class TextRecognizerContract : public ::testing::Test {
public:
  ~TextRecognizerContract() override {
    world_.reset();
    EXPECT_TRUE(Task::endAll(patience));
  }

protected:
  World &world() { return *world_; }

private:
  std::optional<World> world_{std::in_place};
};

using Worlds = ::testing::Types<RealRecognizer, FakeRecognizer>;
TYPED_TEST_SUITE(TextRecognizerContract, Worlds);

TYPED_TEST(TextRecognizerContract, ReadsLinesInOrder) {
  const auto bitmap = this->world().pictureOf({"The first line of text", "and below it another"});
  this->world().recognizer().prepare();
  const std::vector<TextObservation> expected{{"The first line of text"}, {"and below it another"}};
  EXPECT_EQ(this->world().recognizer().recognize(bitmap, {}), expected);
  EXPECT_EQ(this->world().recognizer().recognize(bitmap, {}), expected) << "once more";
}

TYPED_TEST(TextRecognizerContract, FindsNothingWhereNothingIs) {
  EXPECT_TRUE(this->world().recognizer().recognize(this->world().pictureOf({}), {}).empty());
}

TYPED_TEST(TextRecognizerContract, DoesNotBeginWhatIsStopped) {
  std::stop_source stop;
  stop.request_stop();
  const auto bitmap = this->world().pictureOf({"Nobody reads this"});
  EXPECT_THROW(this->world().recognizer().recognize(bitmap, stop.get_token()), CancellationError);
}

TYPED_TEST(TextRecognizerContract, LeavesAtOnceWhenItIsStopped) {
  const auto bitmap = this->world().endlessPicture();
  std::stop_source stop;
  auto reading = std::async(std::launch::async, [&] {
    EXPECT_THROW(this->world().recognizer().recognize(bitmap, stop.get_token()), CancellationError);
  });
  EXPECT_EQ(reading.wait_for(std::chrono::seconds(1)), std::future_status::timeout);
  stop.request_stop();
  EXPECT_EQ(reading.wait_for(std::chrono::seconds(2)), std::future_status::ready);
}

}  // namespace
}  // namespace lumiwren::testing
