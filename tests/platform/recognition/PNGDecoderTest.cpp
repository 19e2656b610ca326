#include "platform/linux/recognition/PNGDecoder.h"
#include "platform/recognition/Bitmaps.h"
#include "platform/recognition/PNGFile.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <string>

namespace lumiwren {

bool operator==(const Bitmap &a, const Bitmap &b) {
  return a.width == b.width && a.height == b.height && a.rgb == b.rgb;
}

namespace {

using namespace testing;

std::optional<Bitmap> decoded(const Image &image) {
  return PNGDecoder().bitmap(image);
}

const Bytes palette{255, 0, 0, 0, 255, 0, 0, 0, 255};
const Bytes shades{0, 0x10, 0x80};  // a row of two grey pixels

struct Form {
  const char *name;
  PNGForm form;
  Bytes rows;
  std::vector<Bytes> extra;
  Bytes rgb;
};

const std::vector<Form> forms{
    {"Grey1", {2, 1, 1, PNGColor::Grey}, {0, 0x40}, {}, {0, 0, 0, 255, 255, 255}},
    {"Grey2", {2, 1, 2, PNGColor::Grey}, {0, 0x60}, {}, {0x55, 0x55, 0x55, 0xaa, 0xaa, 0xaa}},
    {"Grey4", {2, 1, 4, PNGColor::Grey}, {0, 0x2f}, {}, {0x22, 0x22, 0x22, 255, 255, 255}},
    {"Grey8", {2, 1, 8, PNGColor::Grey}, shades, {}, {0x10, 0x10, 0x10, 0x80, 0x80, 0x80}},
    {"Grey16", {1, 1, 16, PNGColor::Grey}, {0, 0x80, 0x00}, {}, {0x80, 0x80, 0x80}},
    {"RGB8", {1, 1, 8, PNGColor::RGB}, {0, 1, 2, 3}, {}, {1, 2, 3}},
    {"RGB16", {1, 1, 16, PNGColor::RGB}, {0, 1, 1, 2, 2, 3, 3}, {}, {1, 2, 3}},
    {"Palette1",
     {2, 1, 1, PNGColor::Palette},
     {0, 0x40},
     {pngChunk("PLTE", palette)},
     {255, 0, 0, 0, 255, 0}},
    {"Palette8",
     {2, 1, 8, PNGColor::Palette},
     {0, 2, 0},
     {pngChunk("PLTE", palette)},
     {0, 0, 255, 255, 0, 0}},
    {"PaletteTranslucent",
     {2, 1, 8, PNGColor::Palette},
     {0, 0, 2},
     {pngChunk("PLTE", palette), pngChunk("tRNS", {0})},
     {255, 255, 255, 0, 0, 255}},
    {"GreyWithOneTransparent",
     {2, 1, 8, PNGColor::Grey},
     shades,
     {pngChunk("tRNS", {0, 0x10})},
     {255, 255, 255, 0x80, 0x80, 0x80}},
    {"GreyAlpha8", {1, 1, 8, PNGColor::GreyAlpha}, {0, 0, 0x80}, {}, {127, 127, 127}},
    {"GreyAlpha16", {1, 1, 16, PNGColor::GreyAlpha}, {0, 0, 0, 0, 0}, {}, {255, 255, 255}},
    {"RGBAlpha8", {2, 1, 8, PNGColor::RGBA}, {0, 9, 8, 7, 255, 0, 0, 255, 51}, {}, {9, 8, 7, 204, 204, 255}},
    {"RGBAlpha16", {1, 1, 16, PNGColor::RGBA}, {0, 1, 1, 2, 2, 3, 3, 255, 255}, {}, {1, 2, 3}},
};

class PNGForms : public ::testing::TestWithParam<Form> {};

TEST_P(PNGForms, BecomeRedGreenAndBlueOnWhite) {
  const auto &[name, form, rows, extra, rgb] = GetParam();
  const auto bitmap = decoded(pngFile(form, rows, extra));
  ASSERT_TRUE(bitmap);
  EXPECT_EQ(bitmap->width, static_cast<int>(form.width));
  EXPECT_EQ(bitmap->height, static_cast<int>(form.height));
  EXPECT_EQ(bitmap->rgb, rgb);
}

INSTANTIATE_TEST_SUITE_P(All, PNGForms, ::testing::ValuesIn(forms),
                         [](const auto &instance) { return std::string(instance.param.name); });

TEST(PNGDecoder, ReadsWhatIsInterlaced) {
  for (const int size : {1, 3, 8, 21}) {
    const Bitmap bitmap = noise(size, size + 2);
    EXPECT_EQ(decoded(pngFile(bitmap, true)), bitmap) << size;
  }
}

TEST(PNGDecoder, ReadsNoiseAndLongStripsAsTheyAre) {
  for (const Bitmap &bitmap : {noise(300, 200), noise(30'000, 2), noise(2, 30'000), noise(1, 1)}) {
    EXPECT_EQ(decoded(pngFile(bitmap)), bitmap) << bitmap.width;
  }
}

TEST(PNGDecoder, FindsNoPictureInOtherFiles) {
  EXPECT_FALSE(decoded({}));
  EXPECT_FALSE(decoded({bytesOf("GIF89a and more")}));
  EXPECT_FALSE(decoded({bytesOf("\x89PNG\r\n\x1a\n")}));
  EXPECT_FALSE(decoded({Bytes(100'000, 0)}));
}

TEST(PNGDecoder, GivesNoHalfPictures) {
  for (const bool isInterlaced : {false, true}) {
    const Image whole = pngFile(noise(9, 7), isInterlaced);
    for (std::size_t length = 0; length < whole.file.size(); ++length) {
      Image part;
      // Exactly as long, so that a sanitizer sees a read behind the end.
      part.file.assign(whole.file.begin(), whole.file.begin() + static_cast<std::ptrdiff_t>(length));
      EXPECT_FALSE(decoded(part)) << length;
    }
  }
}

TEST(PNGDecoder, NeverShowsAnotherPictureForADamagedOne) {
  const Bitmap bitmap = noise(9, 7);
  const Image whole = pngFile(bitmap);
  for (std::size_t at = 0; at < whole.file.size(); ++at) {
    Image damaged = whole;
    damaged.file[at] ^= 0x5a;
    const auto shown = decoded(damaged);
    EXPECT_TRUE(!shown || *shown == bitmap) << at;
  }
}

TEST(PNGDecoder, RefusesPicturesWithTooFewRows) {
  EXPECT_FALSE(decoded(pngFile({4, 4, 8, PNGColor::Grey}, {0, 1, 2, 3, 4})));
}

TEST(PNGDecoder, RefusesMorePixelsThanDesktopsHave) {
  // 32 MB of rows in a file of some kilobytes.
  constexpr std::uint32_t side = 16'000;
  EXPECT_FALSE(decoded(pngFile({side, side, 1, PNGColor::Grey}, Bytes((side / 8 + 1) * side))));
  EXPECT_FALSE(decoded(pngFile({PNGDecoder::maximumSide + 1, 1, 1, PNGColor::Grey}, Bytes(5000))));
  EXPECT_FALSE(decoded(pngFile({1, PNGDecoder::maximumSide + 1, 1, PNGColor::Grey}, Bytes(80'000))));
  EXPECT_FALSE(decoded(pngFile({0x7fffffff, 0x7fffffff, 8, PNGColor::RGB}, Bytes(100))));
  EXPECT_FALSE(decoded(pngFile({0, 0, 8, PNGColor::RGB}, {})));
}

/// The most memory that the process has had so far, in MB.
long peakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST(PNGDecoder, TakesNoMemoryForPixelsThatTheFileCannotHave) {
  const auto before = peakMemory();
  EXPECT_FALSE(decoded(pngFile({8000, 8000, 8, PNGColor::RGBA}, Bytes(100))));
  EXPECT_LT(peakMemory() - before, 50);
}

TEST(PNGDecoder, DoesNotInflateWhatIsNotPixels) {
  const Bytes bomb = deflated(Bytes(20'000'000));
  Bytes text = bytesOf("Comment");
  text.insert(text.end(), {0, 0});
  text.insert(text.end(), bomb.begin(), bomb.end());
  std::vector<Bytes> extra{pngChunk("iCCP", text)};
  extra.insert(extra.end(), 100, pngChunk("zTXt", text));
  Bytes international = bytesOf("Comment");
  international.insert(international.end(), {0, 1, 0, 0, 0});
  international.insert(international.end(), bomb.begin(), bomb.end());
  extra.insert(extra.end(), 100, pngChunk("iTXt", international));
  const Image image = pngFile({1, 1, 8, PNGColor::RGB}, {0, 1, 2, 3}, extra);
  const auto before = peakMemory();
  EXPECT_EQ(decoded(image), (Bitmap{1, 1, {1, 2, 3}}));
  EXPECT_LT(peakMemory() - before, 50);
}

TEST(PNGDecoder, SaysNothingAboutDamagedFiles) {
  Image damaged = pngFile(noise(9, 7));
  damaged.file[damaged.file.size() - 20] ^= 1;
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(decoded(damaged));
  EXPECT_FALSE(decoded(pngFile({2, 1, 8, PNGColor::Palette}, {0, 2, 0})));
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace lumiwren
