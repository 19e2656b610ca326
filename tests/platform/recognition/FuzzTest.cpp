#include "platform/recognition/Bitmaps.h"
#include "platform/recognition/PNGFile.h"
#include "support/FuzzTarget.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace lumiwren {
namespace {

using namespace testing;

/// Repairs the check sums, without which no change would get past them.
void sign(Bytes &file) {
  std::size_t at = 8;
  while (at + 12 <= file.size()) {
    const std::size_t length = (std::size_t{file[at]} << 24) | (std::size_t{file[at + 1]} << 16) |
                               (std::size_t{file[at + 2]} << 8) | file[at + 3];
    if (length > file.size() - at - 12) {
      return;
    }
    Bytes sum;
    appendNumber(sum, static_cast<std::uint32_t>(crc32(0, &file[at + 4], static_cast<uInt>(length + 4))));
    std::copy(sum.begin(), sum.end(), file.begin() + static_cast<std::ptrdiff_t>(at + 8 + length));
    at += length + 12;
  }
}

TEST(Fuzz, ChangedPicturesAreDecodedOrRefused) {
  constexpr int rounds = 200'000;
  const Bytes palette(48, 9);
  const std::vector<Image> seeds{
      pngFile(noise(5, 4)),
      pngFile(noise(9, 9), true),
      pngFile({2, 2, 8, PNGColor::Palette}, {0, 1, 2, 4, 3, 2},
              {pngChunk("PLTE", palette), pngChunk("tRNS", {0, 9})}),
      pngFile({3, 2, 16, PNGColor::RGBA}, Bytes(50, 1), {pngChunk("gAMA", {0, 0, 1, 1})}),
      pngFile({9, 2, 2, PNGColor::Grey}, {1, 2, 3, 4, 5, 6, 7, 8}),
  };
  std::mt19937 random(11);
  for (int round = 0; round < rounds; ++round) {
    Bytes file = seeds[random() % seeds.size()].file;
    for (auto edits = 1 + random() % 4; edits > 0 && file.size() > 8; --edits) {
      const auto at = static_cast<std::ptrdiff_t>(8 + random() % (file.size() - 8));
      switch (random() % 4) {
        case 0:
          file[static_cast<std::size_t>(at)] = static_cast<std::uint8_t>(random());
          break;
        case 1:
          file[static_cast<std::size_t>(at)] ^= static_cast<std::uint8_t>(1U << (random() % 8));
          break;
        case 2:
          file.erase(file.begin() + at);
          break;
        default:
          file.insert(file.begin() + at, static_cast<std::uint8_t>(random()));
      }
    }
    if (random() % 4 != 0) {
      sign(file);
    }
    LLVMFuzzerTestOneInput(file.data(), file.size());
  }
}

}  // namespace
}  // namespace lumiwren
