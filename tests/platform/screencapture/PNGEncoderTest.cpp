#include "platform/linux/screencapture/PNGEncoder.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>
#include <string>

namespace lumiwren {
namespace {

struct Picture {
  int width = 0;
  int height = 0;
  int bitsPerSample = 8;
  Bytes samples;
};

Bytes encoded(const Picture &picture) {
  PNGEncoder encoder(picture.width, picture.height, picture.bitsPerSample);
  const std::size_t rowSize = picture.samples.size() / static_cast<std::size_t>(picture.height);
  for (std::size_t start = 0; start < picture.samples.size(); start += rowSize) {
    encoder.addRow(std::span(picture.samples).subspan(start, rowSize));
  }
  return encoder.finish();
}

struct Chunk {
  std::string type;
  Bytes content;
};

std::uint32_t number(const Bytes &file, std::size_t at) {
  return static_cast<std::uint32_t>(file.at(at) << 24U | file.at(at + 1) << 16U | file.at(at + 2) << 8U |
                                    file.at(at + 3));
}

/// Reads a file as strictly as a decoder may.
std::vector<Chunk> chunks(const Bytes &file) {
  const std::string signature(file.begin(), file.begin() + 8);
  EXPECT_EQ(signature, "\x89PNG\r\n\x1a\n");
  std::vector<Chunk> result;
  for (std::size_t at = 8; at < file.size();) {
    const std::size_t length = number(file, at);
    const auto start = file.begin() + static_cast<std::ptrdiff_t>(at) + 4;
    const auto end = start + 4 + static_cast<std::ptrdiff_t>(length);
    const Bytes checked(start, end);
    EXPECT_EQ(number(file, at + 8 + length), crc32_z(0, checked.data(), checked.size()));
    result.push_back({std::string(start, start + 4), Bytes(start + 4, end)});
    at += 12 + length;
  }
  return result;
}

Picture picture(int width, int height, int bitsPerSample) {
  Picture image{.width = width, .height = height, .bitsPerSample = bitsPerSample, .samples = {}};
  std::uint32_t random = 1;
  for (int count = width * height * 3 * bitsPerSample / 8; count > 0; --count) {
    random = random * 1664525U + 1013904223U;
    image.samples.push_back(count % 7 < 4 ? 0x40 : static_cast<std::uint8_t>(random >> 24U));
  }
  return image;
}

class PNGEncoderTest : public ::testing::TestWithParam<Picture> {};

TEST_P(PNGEncoderTest, HoldsExactlyThePicture) {
  const Picture &image = GetParam();
  const auto parts = chunks(encoded(image));
  ASSERT_EQ(parts.size(), 3U);
  EXPECT_EQ(parts[0].type, "IHDR");
  EXPECT_EQ(parts[1].type, "IDAT");
  EXPECT_EQ(parts[2].type, "IEND");
  EXPECT_TRUE(parts[2].content.empty());
  EXPECT_EQ(number(parts[0].content, 0), static_cast<std::uint32_t>(image.width));
  EXPECT_EQ(number(parts[0].content, 4), static_cast<std::uint32_t>(image.height));
  EXPECT_EQ(Bytes(parts[0].content.begin() + 8, parts[0].content.end()),
            (Bytes{static_cast<std::uint8_t>(image.bitsPerSample), 2, 0, 0, 0}));

  const auto height = static_cast<std::size_t>(image.height);
  const std::size_t rowSize = image.samples.size() / height;
  Bytes rows((rowSize + 1) * height);
  uLongf size = rows.size();
  ASSERT_EQ(uncompress(rows.data(), &size, parts[1].content.data(), parts[1].content.size()), Z_OK);
  ASSERT_EQ(size, rows.size());
  Bytes samples;
  for (auto row = rows.begin(); row != rows.end(); row += static_cast<std::ptrdiff_t>(rowSize + 1)) {
    ASSERT_EQ(*row, 0) << "no filter";
    samples.insert(samples.end(), row + 1, row + 1 + static_cast<std::ptrdiff_t>(rowSize));
  }
  EXPECT_EQ(samples, image.samples);
}

INSTANTIATE_TEST_SUITE_P(Pictures, PNGEncoderTest,
                         ::testing::Values(picture(1, 1, 8), picture(3, 5, 8), picture(701, 403, 8),
                                           picture(40, 30, 16)),
                         [](const auto &parameter) {
                           return std::to_string(parameter.param.width) + "x" +
                                  std::to_string(parameter.param.height) + "x" +
                                  std::to_string(parameter.param.bitsPerSample);
                         });

}  // namespace
}  // namespace lumiwren
