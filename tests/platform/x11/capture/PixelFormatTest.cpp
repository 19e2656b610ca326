#include "platform/linux/x11/capture/PixelFormat.h"

#include "base/Bytes.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

struct Case {
  const char *name;
  PixelFormat format;
  Bytes pixel;
  int bitsPerSample;
  Bytes samples;
};

TEST(PixelFormat, ColoursAreExact) {
  const PixelFormat plain;
  const PixelFormat bigEndian{.mostSignificantByteFirst = true};
  const PixelFormat reversed{.redMask = 0xff, .greenMask = 0xff00, .blueMask = 0xff0000};
  const PixelFormat packed{.bitsPerPixel = 24};
  const PixelFormat deep{.redMask = 0x3ff00000, .greenMask = 0xffc00, .blueMask = 0x3ff};
  const PixelFormat high{.bitsPerPixel = 16, .redMask = 0xf800, .greenMask = 0x7e0, .blueMask = 0x1f};
  const PixelFormat lower{.bitsPerPixel = 16, .redMask = 0x7c00, .greenMask = 0x3e0, .blueMask = 0x1f};
  for (const Case &row : {
           Case{"32 bits", plain, {0x03, 0x02, 0x01, 0xff}, 8, {1, 2, 3}},
           Case{"most significant byte first", bigEndian, {0xff, 0x01, 0x02, 0x03}, 8, {1, 2, 3}},
           Case{"blue first", reversed, {0x01, 0x02, 0x03, 0x00}, 8, {1, 2, 3}},
           Case{"24 bits", packed, {0x03, 0x02, 0x01, 0}, 8, {1, 2, 3}},
           Case{"30 bits, white", deep, {0xff, 0xff, 0xff, 0x3f}, 16, {255, 255, 255, 255, 255, 255}},
           Case{"30 bits, a little blue", deep, {0x01, 0, 0, 0}, 16, {0, 0, 0, 0, 0, 64}},
           Case{"30 bits, red", deep, {0, 0, 0x00, 0x20}, 16, {0x80, 0x20, 0, 0, 0, 0}},
           Case{"16 bits, white", high, {0xff, 0xff, 0, 0}, 8, {255, 255, 255}},
           Case{"16 bits, black", high, {0, 0, 0, 0}, 8, {0, 0, 0}},
           Case{"16 bits, least of each", high, {0x21, 0x08, 0, 0}, 8, {8, 4, 8}},
           Case{"15 bits, blue", lower, {0x1f, 0, 0, 0}, 8, {0, 0, 255}},
       }) {
    ASSERT_TRUE(row.format.isSupported()) << row.name;
    Bytes samples(row.format.samplesPerRow(1));
    row.format.rgbRow(row.pixel, samples);
    EXPECT_EQ(row.format.bitsPerSample(), row.bitsPerSample) << row.name;
    EXPECT_EQ(samples, row.samples) << row.name;
  }
}

TEST(PixelFormat, EveryPixelOfARowIsConvertedAndNothingBehindIt) {
  const PixelFormat plain;
  Bytes pixels;
  for (const int width : {0, 1, 2, 3, 4, 5, 8, 9}) {
    Bytes expected;
    pixels.clear();
    for (int pixel = 0; pixel < width; ++pixel) {
      const auto first = static_cast<std::uint8_t>(pixel * 3);
      const auto second = static_cast<std::uint8_t>(first + 1);
      const auto third = static_cast<std::uint8_t>(first + 2);
      pixels.insert(pixels.end(), {third, second, first, 0xee});
      expected.insert(expected.end(), {first, second, third});
    }
    Bytes samples(expected.size() + 4, 0xcc);
    plain.rgbRow(pixels, std::span(samples).first(expected.size()));
    expected.insert(expected.end(), 4, 0xcc);
    EXPECT_EQ(samples, expected) << width;
  }
}

TEST(PixelFormat, RowsEndAtTheServersAlignment) {
  const PixelFormat packed{.bitsPerPixel = 24};
  EXPECT_EQ(packed.bytesPerRow(1), 4U);
  EXPECT_EQ(packed.bytesPerRow(5), 16U);
  const PixelFormat narrow{.bitsPerPixel = 16};
  EXPECT_EQ(narrow.bytesPerRow(3), 8U);
  EXPECT_EQ(PixelFormat{}.bytesPerRow(3), 12U);
  Bytes samples(packed.samplesPerRow(2));
  packed.rgbRow(Bytes{3, 2, 1, 6, 5, 4, 0, 0}, samples);
  EXPECT_EQ(samples, (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST(PixelFormat, OtherScreensAreNotSupported) {
  EXPECT_FALSE((PixelFormat{.bitsPerPixel = 8}).isSupported());
  EXPECT_FALSE((PixelFormat{.redMask = 0}).isSupported());
  EXPECT_FALSE((PixelFormat{.redMask = 0xf0f0}).isSupported());
}

}  // namespace
}  // namespace lumiwren
